#include "tools/serve/route.h"

#include <algorithm>
#include <array>
#include <optional>

namespace svmscore::serve {
namespace {

struct Known {
  Resource resource;
  std::string_view path;  // a segment {id} is a model's, {version} its version
  std::array<Method, 3> methods;
};

constexpr Method kNone = Method::kOther;

constexpr std::array<Known, 18> kKnown = {{
    {Resource::kPage, "/", {Method::kGet, kNone, kNone}},
    {Resource::kMetrics, "/metrics", {Method::kGet, kNone, kNone}},
    {Resource::kModels, "/model", {Method::kGet, kNone, kNone}},
    {Resource::kModel, "/model/{id}", {Method::kGet, Method::kPost, kNone}},
    {Resource::kPmml, "/model/{id}/pmml", {Method::kGet, kNone, kNone}},
    {Resource::kBatch, "/model/{id}/batch", {Method::kPost, kNone, kNone}},
    {Resource::kCsv, "/model/{id}/csv", {Method::kPost, kNone, kNone}},
    {Resource::kExplain, "/model/{id}/explain", {Method::kPost, kNone, kNone}},
    {Resource::kServer, "/v2", {Method::kGet, kNone, kNone}},
    {Resource::kLive, "/v2/health/live", {Method::kGet, kNone, kNone}},
    {Resource::kReady, "/v2/health/ready", {Method::kGet, kNone, kNone}},
    {Resource::kInferenceModel, "/v2/models/{id}", {Method::kGet, kNone, kNone}},
    {Resource::kInferenceReady, "/v2/models/{id}/ready", {Method::kGet, kNone, kNone}},
    {Resource::kInfer, "/v2/models/{id}/infer", {Method::kPost, kNone, kNone}},
    {Resource::kInferenceModel, "/v2/models/{id}/versions/{version}", {Method::kGet, kNone, kNone}},
    {Resource::kInferenceReady,
     "/v2/models/{id}/versions/{version}/ready",
     {Method::kGet, kNone, kNone}},
    {Resource::kInfer, "/v2/models/{id}/versions/{version}/infer", {Method::kPost, kNone, kNone}},
    {Resource::kUnknown, "", {kNone, kNone, kNone}},
}};

std::optional<unsigned> HexDigit(char c) {
  if (c >= '0' && c <= '9') return static_cast<unsigned>(c - '0');
  if (c >= 'a' && c <= 'f') return static_cast<unsigned>(c - 'a') + 10;
  if (c >= 'A' && c <= 'F') return static_cast<unsigned>(c - 'A') + 10;
  return std::nullopt;
}

// Nothing where an escape is broken.
std::optional<std::string> Decoded(std::string_view text) {
  std::string decoded;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      decoded += text[i];
      continue;
    }
    if (i + 2 >= text.size()) return std::nullopt;
    const std::optional<unsigned> high = HexDigit(text[i + 1]);
    const std::optional<unsigned> low = HexDigit(text[i + 2]);
    if (!high || !low) return std::nullopt;
    decoded += static_cast<char>(*high * 16 + *low);
    i += 2;
  }
  return decoded;
}

// The text up to the next slash, which is taken off `path` with it.
std::string_view TakeSegment(std::string_view& path) {
  const std::size_t end = path.find('/', 1);
  const std::string_view segment = path.substr(0, end);
  path.remove_prefix(std::min(path.size(), end));
  return segment;
}

bool Matches(std::string_view known, std::string_view path, std::string& id) {
  while (!known.empty() && !path.empty()) {
    const std::string_view wanted = TakeSegment(known);
    const std::string_view given = TakeSegment(path);
    if (wanted == "/{id}" || wanted == "/{version}") {
      const std::optional<std::string> text = Decoded(given.substr(1));
      if (!text || !IsModelId(*text)) return false;
      if (wanted == "/{id}") id = *text;
      if (wanted == "/{version}" && *text != "1") return false;
    } else if (wanted != given) {
      return false;
    }
  }
  return known.empty() && path.empty();
}

const Known& KnownOf(Resource resource) {
  return *std::find_if(kKnown.begin(), kKnown.end(),
                       [resource](const Known& known) { return known.resource == resource; });
}

}  // namespace

std::string_view NameOf(Method method) {
  constexpr std::array<std::string_view, 7> kNames = {"GET",    "HEAD",    "POST", "PUT",
                                                      "DELETE", "OPTIONS", "other"};
  return kNames.at(static_cast<std::size_t>(method));
}

std::string_view Route::Name() const {
  return resource == Resource::kUnknown ? "other" : KnownOf(resource).path;
}

std::vector<Method> Route::Methods() const {
  std::vector<Method> methods;
  for (const Method method : KnownOf(resource).methods) {
    if (method == kNone) continue;
    methods.push_back(method);
    if (method == Method::kGet) methods.push_back(Method::kHead);
  }
  if (resource == Resource::kModel) {
    methods.push_back(Method::kPut);
    methods.push_back(Method::kDelete);
  }
  if (!methods.empty()) methods.push_back(Method::kOptions);
  return methods;
}

bool Route::Allows(Method method) const {
  const std::vector<Method> methods = Methods();
  return std::find(methods.begin(), methods.end(), method) != methods.end();
}

Route RouteOf(std::string_view target) {
  Route route;
  const std::size_t end = target.find('?');
  std::string_view path = target.substr(0, end);
  if (end != std::string_view::npos) route.query = target.substr(end + 1);
  if (path.empty() || path.front() != '/') return route;
  constexpr std::string_view kPrefix = "/openscoring";
  route.openscoring = path.starts_with("/openscoring/model");
  if (route.openscoring) path.remove_prefix(kPrefix.size());
  if (path.size() > 2 && path.back() == '/') path.remove_suffix(1);
  route.protocol = path == "/v2" || path.starts_with("/v2/");
  for (const Known& known : kKnown) {
    if (!Matches(known.path, path, route.id)) continue;
    route.resource = known.resource;
    return route;
  }
  route.id.clear();
  return route;
}

bool IsModelId(std::string_view id) {
  constexpr std::size_t kLongest = 128;
  if (id.empty() || id.size() > kLongest || id.front() == '.') return false;
  return std::all_of(id.begin(), id.end(), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' ||
           c == '-' || c == '_';
  });
}

std::string QueryValue(std::string_view query, std::string_view name) {
  while (!query.empty()) {
    const std::size_t end = query.find('&');
    const std::string_view pair = query.substr(0, end);
    query.remove_prefix(end == std::string_view::npos ? query.size() : end + 1);
    const std::size_t equals = pair.find('=');
    if (pair.substr(0, equals) != name || equals == std::string_view::npos) continue;
    return Decoded(pair.substr(equals + 1)).value_or("");
  }
  return {};
}

}  // namespace svmscore::serve
