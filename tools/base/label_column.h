// The column of a table that holds what cases really are.
#ifndef TOOLS_BASE_LABEL_COLUMN_H_
#define TOOLS_BASE_LABEL_COLUMN_H_

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "host/load/loader.h"
#include "tools/base/cell_rules.h"

namespace svmscore::tools {

// Used by one thread. Lives: the target and the rules, longer than this object.
class LabelColumn {
 public:
  // What a cell holds: what the case is, nothing, or something that no case can be.
  enum class Found { kLabel, kMissing, kUnknown };

  // `header` is that of the table `table`; with `of_categories` labels are categories of `target`,
  // else finite numbers. Fails: BadCases where not exactly one column is named `name`, or where it
  // is an input of the model.
  LabelColumn(const std::vector<std::string>& header, const std::string& table,
              const std::string& name, const LoadedModel& loaded,
              const MCZandor_850::ScoreDictVar& target, bool of_categories, const CellRules& rules);

  // Of its cell in each row.
  std::size_t Position() const { return position_; }
  // Sets `label`, the position of a category or a number, where there is one. Fails:
  // std::bad_alloc.
  Found Read(std::string_view cell, double& label);

 private:
  const MCZandor_850::ScoreDictVar& target_;
  const CellRules& rules_;
  bool of_categories_;
  std::size_t position_ = 0;
  std::string buffer_;
};

}  // namespace svmscore::tools

#endif  // TOOLS_BASE_LABEL_COLUMN_H_
