#include "app/load/intake_report.h"

#include <fmt/format.h>

#include "app/base/messages.h"
#include "tools/findings/remarks.h"

namespace svmscore::app {

void TellIntake(const std::string& path, const LoadedModel& loaded) {
  bool wrong = false;
  for (const std::string& remark : tools::RemarksOn(loaded)) {
    wrong = wrong || remark.starts_with("error: ");
    Tell(fmt::format("{}: {}", path, remark));
  }
  if (!wrong) return;
  Tell(path +
       ": scores may be wrong: svmscore doctor says what to do, and --strict-document "
       "refuses such a model");
}

}  // namespace svmscore::app
