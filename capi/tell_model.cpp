// What the interface tells of a model.
#include "capi/call_error.h"
#include "capi/caller_structs.h"
#include "capi/model_state.h"
#include "host/model/instruction_set.h"
#include "host/output/scheme.h"

namespace svmscore::capi {
namespace {

int MethodOf(output::Method method) {
  switch (method) {
    case output::Method::kRegression:
      return SVMSCORE_METHOD_REGRESSION;
    case output::Method::kBinary:
      return SVMSCORE_METHOD_BINARY;
    case output::Method::kOneAgainstOne:
      return SVMSCORE_METHOD_ONE_AGAINST_ONE;
    case output::Method::kOneAgainstAll:
      break;
  }
  return SVMSCORE_METHOD_ONE_AGAINST_ALL;
}

int PercentagesOf(output::Percentages percentages) {
  switch (percentages) {
    case output::Percentages::kNone:
      return SVMSCORE_PERCENTAGES_NONE;
    case output::Percentages::kVoteShares:
      return SVMSCORE_PERCENTAGES_VOTES;
    case output::Percentages::kProbabilities:
      break;
  }
  return SVMSCORE_PERCENTAGES_CALIBRATED;
}

std::size_t MachineCount(const ModelState& state) {
  return state.batch == nullptr ? 0 : state.batch->DecisionCount();
}

svmscore_model_facts FactsOf(const ModelState& state) {
  const output::Scheme& scheme = state.loaded.output->Targets().GetScheme();
  const bool regression = scheme.method == output::Method::kRegression;
  svmscore_model_facts facts{};
  facts.function = regression ? SVMSCORE_REGRESSION : SVMSCORE_CLASSIFICATION;
  facts.method = MethodOf(scheme.method);
  facts.percentages = PercentagesOf(scheme.percentages);
  facts.interval = scheme.interval ? 1 : 0;
  facts.target = TextOf(state.target_name);
  facts.target_type = TextOf(state.target_type);
  facts.category_count = regression ? 0 : state.categories.size();
  facts.input_count = state.inputs.size();
  facts.needed_count = state.loaded.needed.size();
  facts.machine_count = MachineCount(state);
  facts.remark_count = state.remarks.size();
  facts.sha256 = TextOf(state.sha256);
  return facts;
}

void CheckIndex(std::size_t index, std::size_t count, const char* of) {
  if (index < count) return;
  RefuseArgument("index " + std::to_string(index) + " of " + std::to_string(count) + " " + of,
                 "index");
}

const ModelState& StateOf(const svmscore_model* model) {
  Require(model, "model");
  return *model->state;
}

// A machine may name what is no category of the target: the model counts it beyond these.
int PositionOrNone(const ModelState& state, int index) {
  return index < 0 || static_cast<std::size_t>(index) >= state.categories.size() ? -1 : index;
}

svmscore_text CategoryAt(const ModelState& state, int index) {
  const auto position = static_cast<std::size_t>(index);
  if (index < 0 || position >= state.categories.size()) return {"", 0};
  return state.categories[position];
}

}  // namespace
}  // namespace svmscore::capi

using namespace svmscore::capi;

const char* svmscore_version(void) {
  return SVMSCORE_VERSION;
}

const char* svmscore_instruction_set(void) {
  return svmscore::NameOf(svmscore::ChosenIsa().isa);
}

void svmscore_text_free(char* text) {
  delete[] text;
}

int svmscore_model_get_facts(const svmscore_model* model, svmscore_model_facts* facts,
                             svmscore_error** error) {
  return Guarded(error, [&] { Write(FactsOf(StateOf(model)), facts, "facts"); });
}

int svmscore_model_get_input(const svmscore_model* model, size_t index, svmscore_input* input,
                             svmscore_error** error) {
  return Guarded(error, [&] {
    const ModelState& state = StateOf(model);
    CheckIndex(index, state.inputs.size(), "inputs");
    const InputFacts& known = state.input_facts[index];
    svmscore_input told{};
    told.name = TextOf(known.name);
    told.type = TextOf(known.type);
    told.op_type = TextOf(known.op_type);
    told.role = known.role;
    told.has_replacement = known.replacement ? 1 : 0;
    told.replacement = known.replacement ? TextOf(*known.replacement) : svmscore_text{"", 0};
    told.categories = known.categories.data();
    told.category_count = known.categories.size();
    Write(told, input, "input");
  });
}

int svmscore_model_get_machine(const svmscore_model* model, size_t index, svmscore_machine* machine,
                               svmscore_error** error) {
  return Guarded(error, [&] {
    const ModelState& state = StateOf(model);
    CheckIndex(index, MachineCount(state), "machines");
    const auto [target, alternate] = state.batch->DecisionCategories(index);
    svmscore_machine told{};
    told.target = CategoryAt(state, target);
    told.alternate = CategoryAt(state, alternate);
    told.target_index = PositionOrNone(state, target);
    told.alternate_index = PositionOrNone(state, alternate);
    Write(told, machine, "machine");
  });
}

int svmscore_model_get_category(const svmscore_model* model, size_t index, svmscore_text* category,
                                svmscore_error** error) {
  return Guarded(error, [&] {
    const ModelState& state = StateOf(model);
    Require(category, "category");
    CheckIndex(index, FactsOf(state).category_count, "categories");
    *category = state.categories[index];
  });
}

int svmscore_model_get_remark(const svmscore_model* model, size_t index, svmscore_text* remark,
                              svmscore_error** error) {
  return Guarded(error, [&] {
    const ModelState& state = StateOf(model);
    Require(remark, "remark");
    CheckIndex(index, state.remarks.size(), "remarks");
    *remark = state.remarks[index];
  });
}
