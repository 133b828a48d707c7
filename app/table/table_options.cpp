#include "app/table/table_options.h"

#include "app/base/messages.h"

namespace svmscore::app {

void TellOverruledValues(const tools::CellRules& cells, const LoadedModel& loaded) {
  for (const std::string& line : cells.OverruledValues(loaded)) Tell(line);
}

}  // namespace svmscore::app
