// From a file to a model that can score: parsing, intake, translation, checks.
#ifndef HOST_LOAD_LOADER_H_
#define HOST_LOAD_LOADER_H_

#include <functional>
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
  // How the document was made readable, and what of it is guessed, lost or wrong; to the letter,
  // only what its results are not.
  std::vector<Finding> findings;
  // What the document makes of results. Never null.
  std::unique_ptr<output::OutputPlan> output;
};

// How a document is read.
enum class LoadChecks {
  // As its author meant it. What a translator reads is scored, and only what cannot have been meant
  // is refused: names that no field has, a derived field in use that cannot be computed, texts that
  // would have to serve as numbers, isScorable="0", a dense array that does not fit the vector
  // fields, a machine of which nothing is left, an offset that is no number, and what is beyond a
  // limit. A case with a decision value that is not finite fails.
  kRefuse,
  // The same, refusing nothing that the translator reads: for a program that describes a document
  // rather than scoring with it, and tells of these itself.
  kTolerate,
  // Refuses, and also refuses whatever is guessed, lost or wrong.
  kStrict,
  // To the letter: the translator gets the document as it is written. What it reads is scored, and
  // what it refuses is refused. Percentages stay in the order in which its results hold them.
  kAsIs,
};

// Throws SSException, its place in words.
SVMSCORE_HOST_API LoadedModel LoadModel(const Plugin& plugin, PmmlDocument document,
                                        LoadChecks checks = LoadChecks::kRefuse);

// The same for a document that can be parsed more than once. Where kRefuse ends in an error, the
// document is looked at again as it is written: if a translator refuses it by itself, that is the
// error; if a translator reads it, and only what was made of it fails, the model is the one to the
// letter, with a remark that says so.
SVMSCORE_HOST_API LoadedModel LoadModel(const Plugin& plugin,
                                        const std::function<PmmlDocument()>& parse,
                                        LoadChecks checks = LoadChecks::kRefuse);

}  // namespace svmscore

#endif  // HOST_LOAD_LOADER_H_
