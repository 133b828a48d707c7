// The head of a request as the parser gives it. [any thread] Fails: std::bad_alloc.
#ifndef APP_SERVE_REQUEST_HEAD_H_
#define APP_SERVE_REQUEST_HEAD_H_

#include <optional>
#include <string>
#include <string_view>

#include <boost/beast/core/string.hpp>
#include <boost/beast/http/message.hpp>

#include "tools/serve/exchange.h"

namespace svmscore::app {

using ParsedHead = boost::beast::http::request_header<>;

std::string TextOf(boost::beast::string_view text);

serve::RequestHead ReadHead(const ParsedHead& request);

// Whether a header goes on in a second line, which proxies read in several ways.
bool IsFolded(std::string_view head);

// Whether the request says that it has a body.
bool HasBody(const ParsedHead& request);

struct HeadFault {
  unsigned status = 400;
  const char* what = "";
};
// Where the request is unclear about its host, or about its end, after which another one might be
// hidden; or where it has too long a target.
std::optional<HeadFault> FaultOf(const ParsedHead& request);

}  // namespace svmscore::app

#endif  // APP_SERVE_REQUEST_HEAD_H_
