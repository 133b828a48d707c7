// What is checked of a request before its body is read.
#ifndef TOOLS_SERVE_REQUEST_CHECKS_H_
#define TOOLS_SERVE_REQUEST_CHECKS_H_

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/serve/exchange.h"
#include "tools/serve/route.h"

namespace svmscore::serve {

struct AccessRules {
  // Names and addresses, without ports and in lower case, under which the service is called.
  std::vector<std::string> hosts;
  bool any_address = false;          // any address that is no name, too
  std::vector<std::string> origins;  // of pages that may read answers
  bool allow_upload = false;
  std::string upload_token;  // empty: none is needed
};

// The answer for a request that is not to be read on: one for another host, of an unknown resource,
// with a wrong method or type of content, or without the right to change models; and to OPTIONS.
// Nothing for any other. [any thread] Fails: std::bad_alloc.
std::optional<Answer> CheckHead(const RequestHead& head, const Route& route,
                                const AccessRules& rules);

// Whether the service may be called so. [any thread] Fails: std::bad_alloc.
bool IsKnownHost(const std::string& host, const AccessRules& rules);

// Headers that every answer has: those for the page that asked, against guesses of browsers, a
// policy under which nothing in it runs, unless it has a policy of its own, and below /openscoring
// one that its clients look for.
// [any thread] Fails: std::bad_alloc.
void AddCommonHeaders(const RequestHead& head, const AccessRules& rules, Answer& answer);

// Of ASCII letters alone. [any thread] Fails: std::bad_alloc.
std::string LowerCase(std::string_view text);

Answer ErrorAnswer(const Route& route, unsigned status, const std::string& what);
constexpr const char* kNoSuchPath = "there is no such path; GET /model lists the models";

}  // namespace svmscore::serve

#endif  // TOOLS_SERVE_REQUEST_CHECKS_H_
