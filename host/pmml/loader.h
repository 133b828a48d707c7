// From a file to a model that can score: parsing, intake, translation, checks.
#ifndef HOST_PMML_LOADER_H_
#define HOST_PMML_LOADER_H_

#include <memory>
#include <string>
#include <vector>

#include "host/api.h"
#include "host/pmml/document.h"
#include "host/pmml/plugin.h"
#include "host/score_model.h"

namespace svmscore {

// A model with the document that it came from. Moves, does not copy.
struct SVMSCORE_HOST_API LoadedModel {
  PmmlDocument document;
  std::unique_ptr<MCZandor_850::BaseTranslator> translator;
  std::unique_ptr<MCZandor_850::ScoreModel> model;
  // The dictionary variables whose values a case needs: those of the vector fields, and those that
  // their derived fields are computed from. In dictionary order; owned by the model.
  std::vector<const MCZandor_850::ScoreDictVar*> needed;
  // All variables that the mining schema makes inputs. In dictionary order; owned by the model.
  std::vector<const MCZandor_850::ScoreDictVar*> active;
};

// Throws SSException, its place in words. What the document leaves unsaid or says wrongly beyond the
// translator's own rules is refused here: transformations that cannot be computed, vector fields
// that name nothing or a text, a model without a target.
SVMSCORE_HOST_API LoadedModel LoadModel(const Plugin& plugin, PmmlDocument document);

}  // namespace svmscore

#endif  // HOST_PMML_LOADER_H_
