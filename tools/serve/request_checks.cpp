#include "tools/serve/request_checks.h"

#include <algorithm>
#include <array>
#include <cctype>

#include <fmt/format.h>
#include <nettle/memops.h>

#include "host/text/printable.h"
#include "tools/serve/answer_text.h"

namespace svmscore::serve {
namespace {

// Without parameters such as the character set.
std::string MediaType(std::string_view header) {
  std::string_view type = header.substr(0, header.find(';'));
  while (!type.empty() && (type.back() == ' ' || type.back() == '\t')) type.remove_suffix(1);
  return LowerCase(type);
}

// Of "name:port", "[address]:port" and the same without a port; empty for anything else.
std::string HostName(std::string_view host) {
  const std::size_t bracket = host.starts_with('[') ? host.find(']') : 0;
  if (bracket == std::string_view::npos) return {};
  const std::size_t end = std::min(bracket > 0 ? bracket + 1 : host.find(':'), host.size());
  const std::string_view port = host.substr(end);
  if (!port.empty() && (port[0] != ':' || port.find_first_not_of("0123456789", 1) != port.npos)) {
    return {};
  }
  return LowerCase(host.substr(0, end));
}

// An address cannot be made to mean another host, as a name can.
bool IsAddress(const std::string& name) {
  if (name.starts_with('[')) return true;
  return !name.empty() && name.find_first_not_of("0123456789.") == std::string::npos;
}

template <typename Texts>
bool Holds(const Texts& texts, std::string_view text) {
  return std::find(std::begin(texts), std::end(texts), text) != std::end(texts);
}

// What bodies a resource takes; empty where they are fine.
std::string WrongContent(const RequestHead& head, const Route& route) {
  if (!head.content_encoding.empty()) {
    const std::string encoding = LowerCase(head.content_encoding);
    if (encoding != "gzip" && encoding != "identity") {
      return "the content encoding is not read; send the body as it is or with gzip";
    }
  }
  if (head.content_type.empty()) return {};
  const std::string type = MediaType(head.content_type);
  constexpr std::array<std::string_view, 4> kTables = {"text/csv", "text/plain", "application/csv",
                                                       "application/octet-stream"};
  constexpr std::array<std::string_view, 5> kDocuments = {"application/xml", "text/xml",
                                                          "application/octet-stream",
                                                          "application/gzip", "application/zstd"};
  if (head.method == Method::kPut) {
    if (Holds(kDocuments, type) || type.ends_with("+xml")) return {};
    return "the content type is not that of a document; send it as application/xml";
  }
  if (route.resource == Resource::kCsv) {
    if (Holds(kTables, type)) return {};
    return "the content type is not that of a table; send it as text/csv";
  }
  if (type == "application/json" || type.ends_with("+json")) return {};
  return "the content type is not JSON; send the body as application/json";
}

constexpr std::string_view kOpenscoring = "/openscoring/";

bool HasToken(const RequestHead& head, const AccessRules& rules) {
  constexpr std::string_view kScheme = "bearer ";
  const std::string& given = head.authorization;
  if (given.size() != kScheme.size() + rules.upload_token.size()) return false;
  if (LowerCase(given.substr(0, kScheme.size())) != kScheme) return false;
  return nettle_memeql_sec(given.data() + kScheme.size(), rules.upload_token.data(),
                           rules.upload_token.size()) != 0;
}

std::string Joined(const std::vector<Method>& methods) {
  std::string names;
  for (const Method method : methods) {
    if (!names.empty()) names += ", ";
    names += NameOf(method);
  }
  return names;
}

Answer OptionsAnswer(const RequestHead& head, const Route& route, const AccessRules& rules) {
  Answer answer;
  answer.status = 204;
  answer.content_type.clear();
  answer.headers.emplace_back("Allow", Joined(route.Methods()));
  if (head.asked_method.empty() || !Holds(rules.origins, head.origin)) return answer;
  answer.headers.emplace_back("Access-Control-Allow-Methods", Joined(route.Methods()));
  answer.headers.emplace_back("Access-Control-Allow-Headers",
                              "Authorization, Content-Encoding, Content-Type, X-Request-Id");
  answer.headers.emplace_back("Access-Control-Max-Age", "600");
  return answer;
}

}  // namespace

std::string LowerCase(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return lower;
}

Answer ErrorAnswer(const Route& route, unsigned status, const std::string& what) {
  Answer answer;
  answer.status = status;
  answer.body = ErrorBody(what, route.protocol);
  answer.model_id = route.id;
  return answer;
}

bool IsKnownHost(const std::string& host, const AccessRules& rules) {
  const std::string name = HostName(host);
  return Holds(rules.hosts, name) || (rules.any_address && IsAddress(name));
}

std::optional<Answer> CheckHead(const RequestHead& head, const Route& route,
                                const AccessRules& rules) {
  if (!IsKnownHost(head.host, rules)) {
    return ErrorAnswer(
        route, 403,
        fmt::format("this service is not called \"{}\"; --allow-host allows the name",
                    Printable(head.host, kLongestInsert)));
  }
  if (route.resource == Resource::kUnknown) {
    return ErrorAnswer(route, 404, kNoSuchPath);
  }
  if (!route.Allows(head.method)) {
    Answer answer = ErrorAnswer(
        route, 405,
        fmt::format("this path does not know the method; it knows {}", Joined(route.Methods())));
    answer.headers.emplace_back("Allow", Joined(route.Methods()));
    return answer;
  }
  if (head.method == Method::kOptions) return OptionsAnswer(head, route, rules);
  if (head.method == Method::kPut || head.method == Method::kDelete) {
    if (!rules.allow_upload) {
      return ErrorAnswer(route, 403, "models cannot be changed here; --allow-upload allows it");
    }
    if (!rules.upload_token.empty() && !HasToken(head, rules)) {
      Answer answer =
          ErrorAnswer(route, 401,
                      "models are changed with the token of the service alone; send it as "
                      "Authorization: Bearer TOKEN");
      answer.headers.emplace_back("WWW-Authenticate", "Bearer");
      return answer;
    }
  }
  if (head.method != Method::kPost && head.method != Method::kPut) return std::nullopt;
  if (head.has_binary_tensors) {
    return ErrorAnswer(route, 400, "binary tensors are not read; send them as JSON");
  }
  const std::string wrong = WrongContent(head, route);
  if (!wrong.empty()) return ErrorAnswer(route, 415, wrong);
  return std::nullopt;
}

void AddCommonHeaders(const RequestHead& head, const AccessRules& rules, Answer& answer) {
  answer.headers.emplace_back("X-Content-Type-Options", "nosniff");
  // Clients of Openscoring speak with nobody who does not say so.
  if (head.target.starts_with(kOpenscoring)) {
    answer.headers.emplace_back("X-Application", "Openscoring/2.0 (svmscore " SVMSCORE_VERSION ")");
  }
  const auto is_policy = [](const auto& header) {
    return header.first == "Content-Security-Policy";
  };
  if (std::none_of(answer.headers.begin(), answer.headers.end(), is_policy)) {
    // A browser that shows the answer as a document runs nothing in it: models come from anywhere.
    answer.headers.emplace_back("Content-Security-Policy",
                                "default-src 'none'; sandbox; frame-ancestors 'none'");
  }
  if (rules.origins.empty()) return;
  answer.headers.emplace_back("Vary", "Origin");
  if (!Holds(rules.origins, head.origin)) return;
  answer.headers.emplace_back("Access-Control-Allow-Origin", head.origin);
  answer.headers.emplace_back("Access-Control-Expose-Headers", "X-Model-SHA256, X-Request-Id");
}

}  // namespace svmscore::serve
