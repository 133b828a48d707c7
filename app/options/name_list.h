// Lists of names in options, as in --passthrough a,b.
#ifndef APP_OPTIONS_NAME_LIST_H_
#define APP_OPTIONS_NAME_LIST_H_

#include <string>
#include <vector>

namespace svmscore::app {

// The names of the lists one after the other: separated by commas, with the quoting of CSV for a
// name that holds one. `option` is how messages call it. Fails: Failure(kUsageError).
std::vector<std::string> NamesIn(const std::vector<std::string>& lists, const char* option);

}  // namespace svmscore::app

#endif  // APP_OPTIONS_NAME_LIST_H_
