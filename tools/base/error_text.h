// The words for errors of the host and of the system.
#ifndef TOOLS_BASE_ERROR_TEXT_H_
#define TOOLS_BASE_ERROR_TEXT_H_

#include <string>
#include <system_error>

#include "host/model/ss_exception.h"

namespace svmscore::tools {

// The system's words for an error number. [any thread] Fails: std::bad_alloc.
inline std::string ErrorText(int error) {
  return std::generic_category().message(error);
}

// [CODE] what is wrong (where). What to do. [any thread] Fails: std::bad_alloc.
std::string Explain(const MCZandor_850::SSException& error);

}  // namespace svmscore::tools

#endif  // TOOLS_BASE_ERROR_TEXT_H_
