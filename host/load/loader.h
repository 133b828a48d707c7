// From a file to a model that can score: parsing, intake, translation, checks.
#ifndef HOST_LOAD_LOADER_H_
#define HOST_LOAD_LOADER_H_

#include <memory>
#include <string>
#include <vector>

#include "host/findings/finding.h"
#include "host/intake/make_readable.h"
#include "host/load/plugin.h"
#include "host/model/score_model.h"
#include "host/output/output_plan.h"
#include "host/text/api.h"
#include "host/xml/document.h"

namespace svmscore {

// A model with the document that it came from. Moves, does not copy.
struct SVMSCORE_HOST_API LoadedModel {
  PmmlDocument document;
  std::unique_ptr<MCZandor_850::BaseTranslator> translator;
  std::unique_ptr<MCZandor_850::ScoreModel> model;
  // The dictionary variables whose values a case needs: those of the vector fields, those that
  // their derived fields are computed from, and those that output fields are. In dictionary order;
  // owned by the model.
  std::vector<const MCZandor_850::ScoreDictVar*> needed;
  // All variables that the mining schema makes inputs. In dictionary order; owned by the model.
  std::vector<const MCZandor_850::ScoreDictVar*> active;
  // How the document was made readable, and what of it is guessed, lost or wrong; empty where it is
  // read as it stands and its author meant it.
  std::vector<Finding> findings;
  // What the document makes of results. Null only where it cannot be read and that is tolerated.
  std::unique_ptr<output::OutputPlan> output;
};

// Whether what makes every score meaningless is refused: transformations that cannot be computed,
// vector fields that name nothing or a text, forms of a document that are not supported. A program
// that describes a document rather than scoring with it tells of these itself.
enum class LoadChecks {
  kRefuse,
  kTolerate,
  kStrict,  // refuses, and also refuses what IntakeMode::kStrict does
};

// Throws SSException, its place in words.
SVMSCORE_HOST_API LoadedModel LoadModel(const Plugin& plugin, PmmlDocument document,
                                        LoadChecks checks = LoadChecks::kRefuse);

}  // namespace svmscore

#endif  // HOST_LOAD_LOADER_H_
