#include "tools/base/case_columns.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

#include <fmt/format.h>

#include "tools/base/bad_input.h"
#include "tools/base/header_hints.h"

namespace svmscore::tools {
namespace {

using MCZandor_850::ScoreDictVar;

class Header {
 public:
  Header(const std::vector<std::string_view>& names, const std::string& input_name)
      : input_name_(input_name), names_(names) {
    for (std::size_t i = 0; i < names.size(); ++i) {
      const std::string name(names[i]);
      if (!positions_.emplace(name, i).second) repeated_.insert(name);
    }
  }

  bool Has(const std::string& name) const { return positions_.count(name) != 0; }

  // REQUIRES: Has(name).
  std::size_t PositionOf(const std::string& name) const {
    if (repeated_.count(name) != 0) {
      throw BadCases(
          fmt::format("{}the {} names the column \"{}\" twice", Begin(), Subject(), name), name);
    }
    return positions_.at(name);
  }

  void Require(const std::vector<std::string>& names, NamedBy named_by) const {
    std::vector<std::string> missing;
    std::copy_if(names.begin(), names.end(), std::back_inserter(missing),
                 [this](const std::string& name) { return !Has(name); });
    if (missing.empty()) return;
    throw BadCases(Begin() + LackOf(names, missing, named_by, names_, Subject()), missing.front());
  }

 private:
  std::string Begin() const { return input_name_.empty() ? "" : input_name_ + ": "; }
  std::string Subject() const { return input_name_.empty() ? "table" : "header"; }

  const std::string& input_name_;
  std::unordered_map<std::string, std::size_t> positions_;
  std::unordered_set<std::string> repeated_;
  const std::vector<std::string_view>& names_;
};

}  // namespace

std::vector<const ScoreDictVar*> InputsOf(const LoadedModel& loaded) {
  std::vector<const ScoreDictVar*> inputs = loaded.needed;
  const std::unordered_set<const ScoreDictVar*> listed(inputs.begin(), inputs.end());
  std::copy_if(loaded.active.begin(), loaded.active.end(), std::back_inserter(inputs),
               [&listed](const ScoreDictVar* var) { return listed.count(var) == 0; });
  return inputs;
}

CaseColumns MatchColumns(const std::vector<std::string_view>& names, const LoadedModel& loaded,
                         const std::vector<std::string>& copied, const std::string& input_name) {
  const Header header(names, input_name);
  std::vector<std::string> needed;
  for (const ScoreDictVar* var : loaded.needed) needed.push_back(var->GetName());
  header.Require(needed, NamedBy::kModel);
  header.Require(copied, NamedBy::kUser);

  CaseColumns columns;
  columns.width = names.size();
  for (const ScoreDictVar* var : InputsOf(loaded)) {
    if (!header.Has(var->GetName())) continue;
    columns.variables.push_back(var);
    columns.cells.push_back(header.PositionOf(var->GetName()));
  }
  for (const ScoreDictVar* var : loaded.output->ExtraInputs()) {
    columns.extras.push_back(header.Has(var->GetName()) ? header.PositionOf(var->GetName())
                                                        : kNoCell);
  }
  for (const std::string& name : copied) columns.copied.push_back(header.PositionOf(name));
  return columns;
}

}  // namespace svmscore::tools
