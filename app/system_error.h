// The system's own words for an error number.
#ifndef APP_SYSTEM_ERROR_H_
#define APP_SYSTEM_ERROR_H_

#include <string>
#include <system_error>

namespace svmscore::app {

inline std::string ErrorText(int error) {
  return std::generic_category().message(error);
}

}  // namespace svmscore::app

#endif  // APP_SYSTEM_ERROR_H_
