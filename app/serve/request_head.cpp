#include "app/serve/request_head.h"

#include <cstddef>

#include <boost/beast/http/verb.hpp>

namespace svmscore::app {
namespace {

namespace http = boost::beast::http;
using serve::Method;

constexpr std::size_t kLongestTarget = 4096;

Method MethodOf(http::verb verb) {
  switch (verb) {
    case http::verb::get:
      return Method::kGet;
    case http::verb::head:
      return Method::kHead;
    case http::verb::post:
      return Method::kPost;
    case http::verb::put:
      return Method::kPut;
    case http::verb::delete_:
      return Method::kDelete;
    case http::verb::options:
      return Method::kOptions;
    default:
      return Method::kOther;
  }
}

}  // namespace

std::string TextOf(boost::beast::string_view text) {
  return std::string(text.data(), text.size());
}

bool IsFolded(std::string_view head) {
  return head.find("\r\n ") != std::string_view::npos ||
         head.find("\r\n\t") != std::string_view::npos;
}

bool HasBody(const ParsedHead& request) {
  return request.count("Content-Length") + request.count("Transfer-Encoding") > 0;
}

serve::RequestHead ReadHead(const ParsedHead& request) {
  serve::RequestHead head;
  head.method = MethodOf(request.method());
  head.target = TextOf(request.target());
  head.host = TextOf(request["Host"]);
  head.origin = TextOf(request["Origin"]);
  head.content_type = TextOf(request["Content-Type"]);
  head.content_encoding = TextOf(request["Content-Encoding"]);
  head.authorization = TextOf(request["Authorization"]);
  head.asked_method = TextOf(request["Access-Control-Request-Method"]);
  head.has_binary_tensors = request.count("Inference-Header-Content-Length") > 0;
  return head;
}

std::optional<HeadFault> FaultOf(const ParsedHead& request) {
  if (request.target().size() > kLongestTarget) {
    return HeadFault{414, "the target of the request is too long"};
  }
  const std::size_t hosts = request.count("Host");
  if (hosts > 1) return HeadFault{400, "the request names several hosts"};
  if (hosts == 0 && request.version() >= 11) {
    return HeadFault{400, "the request names no host"};
  }
  const std::size_t lengths = request.count("Content-Length");
  const std::size_t encodings = request.count("Transfer-Encoding");
  const boost::beast::string_view length = request["Content-Length"];
  const bool odd_length = length.find_first_not_of("0123456789") != length.npos;
  const bool odd_encoding =
      encodings > 0 && !boost::beast::iequals(request["Transfer-Encoding"], "chunked");
  if (lengths + encodings > 1 || odd_length || odd_encoding) {
    return HeadFault{400, "the request says in several ways, or in an unknown one, where it ends"};
  }
  if (encodings > 0 && request.version() < 11) {
    return HeadFault{400, "chunks are of HTTP/1.1, and the request is not"};
  }
  return std::nullopt;
}

}  // namespace svmscore::app
