#include "app/options/reading_option.h"

#include "app/base/failure.h"

namespace svmscore::app {

void AddReadingOptions(CLI::App& command, ReadingOptions& options, const std::string& strict_help) {
  command.add_flag("--strict-document", options.strict, strict_help);
  command.add_flag("--as-is", options.as_is,
                   "read the document to the letter: nothing is rewritten or guessed, and nothing "
                   "is refused that can be scored as written");
}

LoadChecks ChecksOf(const ReadingOptions& options) {
  if (options.strict && options.as_is) {
    throw Failure(
        kUsageError,
        "--as-is and --strict-document cannot be combined: one reads the document as it is "
        "written, the other refuses a document that does not mean exactly what is written");
  }
  if (options.as_is) return LoadChecks::kAsIs;
  return options.strict ? LoadChecks::kStrict : LoadChecks::kRefuse;
}

}  // namespace svmscore::app
