// From a file to a model that can score: parsing, intake, translation, checks. [any thread],
// several loads at once too. Owns: the caller. Lives: arguments for the call; a model, even without
// the plug-in object. Fails: SSException, its place in words; std::bad_alloc.
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
  // only results that are not as declared.
  std::vector<Finding> findings;
  // The output fields and targets of the document. Never null.
  std::unique_ptr<output::OutputPlan> output;
};

// How a document is read.
enum class LoadChecks {
  // As its author meant it. A document that a translator reads is scored, unless it has an error
  // that the author cannot have meant: a name that no field has, a derived field in use that cannot
  // be computed, a text where a number is needed, isScorable="0", a dense array that does not fit
  // the vector fields, a machine without usable terms, an offset that is not a number, or something
  // beyond a limit. A case with a decision value that is not finite fails.
  kRefuse,
  // The same, but refuses nothing that the translator reads: for a program that only describes a
  // document, and reports these errors itself.
  kTolerate,
  // As kRefuse, and also refuses whatever is guessed, lost or wrong.
  kStrict,
  // To the letter: the translator gets the document as it is written. What it reads is scored, and
  // what it refuses is refused. Percentages stay in the order in which its results hold them.
  kAsIs,
};

// `plugin` makes the translator that reads `document`.
SVMSCORE_HOST_API LoadedModel LoadModel(const Plugin& plugin, PmmlDocument document,
                                        LoadChecks checks = LoadChecks::kRefuse);

// The same for a document that can be parsed more than once. If kRefuse ends in an error, the
// document is read again as it is written: if a translator refuses it, that is the error; if a
// translator reads it, and only the rewritten document fails, the model is the one read to the
// letter, with a finding that says so. If kStrict ends in an error and kRefuse does too, the error
// is that of kRefuse.
SVMSCORE_HOST_API LoadedModel LoadModel(const Plugin& plugin,
                                        const std::function<PmmlDocument()>& parse,
                                        LoadChecks checks = LoadChecks::kRefuse);

}  // namespace svmscore

#endif  // HOST_LOAD_LOADER_H_
