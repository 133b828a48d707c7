// Which resource a request is about.
#ifndef TOOLS_SERVE_ROUTE_H_
#define TOOLS_SERVE_ROUTE_H_

#include <string>
#include <string_view>
#include <vector>

#include "tools/serve/exchange.h"

namespace svmscore::serve {

enum class Resource {
  kUnknown,
  kPage,
  kMetrics,
  kModels,
  kModel,
  kPmml,
  kBatch,
  kCsv,
  kExplain,
  kServer,
  kLive,
  kReady,
  kInferenceModel,
  kInferenceReady,
  kInfer,
};

struct Route {
  Resource resource = Resource::kUnknown;
  std::string id;  // of the model; empty for other resources
  std::string query;
  bool protocol = false;     // below /v2, where errors are told otherwise
  bool openscoring = false;  // below /openscoring, where tables may name their rows

  // The path with {id} in place of the id: one of a few texts. Lives: as long as the process.
  std::string_view Name() const;
  // The methods that the resource knows.
  std::vector<Method> Methods() const;
  bool Allows(Method method) const;
};

// `target` is a path, perhaps with a query. A path is also known with a slash at its end, and that
// of /model below /openscoring. An id that IsModelId refuses is no route. [any thread] Fails:
// std::bad_alloc.
Route RouteOf(std::string_view target);

// Letters, digits, dots, hyphens and underscores, at most 128, the first no dot. [any thread]
// Fails: never.
bool IsModelId(std::string_view id);

// The value of a name in a query, decoded; empty where there is none. [any thread] Fails:
// std::bad_alloc.
std::string QueryValue(std::string_view query, std::string_view name);

}  // namespace svmscore::serve

#endif  // TOOLS_SERVE_ROUTE_H_
