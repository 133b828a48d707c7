// A request and its answer, as far as they have to do with models: what the server reads from and
// writes to its connections.
#ifndef TOOLS_SERVE_EXCHANGE_H_
#define TOOLS_SERVE_EXCHANGE_H_

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/serve/row_run.h"

namespace svmscore::serve {

enum class Method { kGet, kHead, kPost, kPut, kDelete, kOptions, kOther };
std::string_view NameOf(Method method);

// What is known of a request before its body is read. Texts are empty where there is no such
// header.
struct RequestHead {
  Method method = Method::kGet;
  std::string target;  // path and query as they are sent
  std::string host;
  std::string origin;
  std::string content_type;
  std::string content_encoding;
  std::string authorization;
  std::string asked_method;  // Access-Control-Request-Method
  bool has_binary_tensors = false;
  bool has_body = false;  // a length above 0, or chunks
};

struct Answer {
  unsigned status = 200;
  std::string content_type = "application/json";
  std::string body;
  std::shared_ptr<const std::string> shared;  // instead of the body, where it need not be copied
  std::vector<std::pair<std::string, std::string>> headers;

  // For the log and the metrics.
  std::string model_id;
  std::string sha256;  // of the model that answered; empty where none did
  RowCounts rows;

  const std::string& Body() const { return shared ? *shared : body; }
};

}  // namespace svmscore::serve

#endif  // TOOLS_SERVE_EXCHANGE_H_
