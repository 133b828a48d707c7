// Explaining decision values: what each input of a case contributes to them.
#ifndef HOST_MODEL_EXPLAINABLE_MODEL_H_
#define HOST_MODEL_EXPLAINABLE_MODEL_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/model/batch_model.h"
#include "host/model/score_dict_var.h"
#include "host/text/api.h"

namespace svmscore {

// What explanations are made with.
struct ExplainerSetUp {
  // [players]: the entries that change together, as positions; a player may have none. Each entry
  // belongs to exactly one player.
  std::vector<std::vector<std::size_t>> players;
  // The background, finite: an input that is absent takes the value of one of these cases, each as
  // likely as another. At least one case.
  BatchCases background;
  // Of sampled explanations: where the draws begin, and how many orders of the players are drawn
  // for each case of the background, rounded up to an even number of at least 4; 0: as many as make
  // 400 or more together.
  std::uint64_t seed = 1;
  std::size_t orders = 0;
};

// What is wanted of each case, in columns that the caller owns; null is not wanted.
struct Explanations {
  double* decisions = nullptr;  // [cases][DecisionCount()]: those of BatchModel, to the last bit
  // [cases][DecisionCount()][players]: Shapley values, in units of the decision value. Their sum is
  // the decision value less Base().
  double* values = nullptr;
  // The same shape: standard errors of values that are sampled, 0 for exact ones.
  double* errors = nullptr;
  // [cases][DecisionCount()][EntryCount()]: the derivative of the decision value by each entry.
  double* gradients = nullptr;
};

// Shapley values of decision values for one background, L. S. Shapley (1953), in the interventional
// form: the worth of a set of players is the mean, over the background, of the decision value of
// the case with all other players' entries replaced by the background's. Players that the model and
// the background do not tell apart get equal values for equal entries; one that no vector uses, or
// whose entries are the same in the case and all of the background, gets 0.0. Immutable. Results
// have the same bits whatever the number of cases in a call, of threads, and the instruction set.
class SVMSCORE_HOST_API Explainer {
 public:
  virtual ~Explainer();

  // Whether values are means over drawn orders of the players, with an error; otherwise they are
  // exact but for rounding. [any thread] Fails: never.
  virtual bool IsSampled() const = 0;
  // The mean decision value of the background. [any thread] Fails: never.
  virtual double Base(std::size_t decision) const = 0;
  // The sum of the coefficients' sizes of the decision value: the unit that rounding errors are
  // measured in. [any thread] Fails: never.
  virtual double Scale(std::size_t decision) const = 0;
  // Explains cases whose entries are finite; a case with another entry gets NaN throughout, also as
  // its decision values. Where a decision value or its base is not finite, the rest of it is NaN.
  // [any thread] Lives: all columns for the call. Fails: std::bad_alloc.
  virtual void Explain(const BatchCases& cases, const Explanations& out) const = 0;
};

// A BatchModel may also be one of these: ask by dynamic_cast.
class SVMSCORE_HOST_API ExplainableModel {
 public:
  virtual ~ExplainableModel();

  // The variable that an entry is made of, of the dictionary or derived; null where the document
  // names none. [any thread] Owns: the model. Fails: never.
  virtual const MCZandor_850::ScoreDictVar* EntryVariable(std::size_t entry) const = 0;
  // The name of the entry: that of its variable, or NAME=CATEGORY for the indicator of a category.
  // [any thread] Fails: std::bad_alloc.
  virtual std::string EntryName(std::size_t entry) const = 0;

  // The vector instances that a machine uses as cases, each once however many machines use it, and
  // instances of equal values each, as it is the instances that training kept: entry e of vector i
  // at [e * count + i]; `count` becomes their number. Empty where the vectors are no cases, as for
  // a linear machine that is written by its weights. [any thread] Owns: the caller. Fails:
  // std::bad_alloc.
  virtual std::vector<double> VectorsAsCases(std::size_t& count) const = 0;

  // REQUIRES: what ExplainerSetUp says; the model outlives the explainer. Null for a model that
  // cannot score. [any thread] Owns: the caller. Lives: the set-up for the call. Fails:
  // std::bad_alloc.
  virtual std::unique_ptr<Explainer> MakeExplainer(const ExplainerSetUp& setup) const = 0;
};

}  // namespace svmscore

#endif  // HOST_MODEL_EXPLAINABLE_MODEL_H_
