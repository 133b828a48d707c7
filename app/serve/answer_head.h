// The texts around an answer: its head, and its line in the log. [any thread] Fails:
// std::bad_alloc.
#ifndef APP_SERVE_ANSWER_HEAD_H_
#define APP_SERVE_ANSWER_HEAD_H_

#include <atomic>
#include <cstdint>
#include <string>

#include "tools/serve/exchange.h"
#include "tools/serve/route.h"

namespace svmscore::app {

// The client's own where it is made of letters, digits, dots, hyphens and underscores, or else a
// new one.
std::string RequestId(const std::string& given, std::atomic<std::uint64_t>& requests);

// Status line and headers, with the blank line. `old`: the client speaks HTTP/1.0.
std::string HeadOf(const serve::Answer& answer, const std::string& request_id, bool keeps_alive,
                   bool old);

std::string LogLine(const std::string& request_id, serve::Method method, const serve::Route& route,
                    const serve::Answer& answer, double seconds);

}  // namespace svmscore::app

#endif  // APP_SERVE_ANSWER_HEAD_H_
