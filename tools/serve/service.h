// Requests to answers, without a connection: everything but what changes the models.
#ifndef TOOLS_SERVE_SERVICE_H_
#define TOOLS_SERVE_SERVICE_H_

#include <atomic>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include "tools/serve/case_requests.h"
#include "tools/serve/exchange.h"
#include "tools/serve/metrics.h"
#include "tools/serve/model_store.h"
#include "tools/serve/route.h"

namespace svmscore::serve {

// Scores a table as svmscore score does. Fails: BadRequest; std::bad_alloc.
using TableScorer = std::function<std::string(const ServedModel& model, std::string& table,
                                              const Route& route, RowCounts& rows)>;

// What the service has beside the models.
struct ServiceParts {
  RequestBounds bounds;
  TableScorer tables;
  std::string page;  // empty for none
  std::string page_policy;
};

// [any thread] Lives: the store and the metrics, longer than this.
class Service {
 public:
  Service(const ModelStore& store, Metrics& metrics, ServiceParts parts)
      : store_(store), metrics_(metrics), parts_(std::move(parts)) {}

  // The answer to a request that CheckHead lets through. `body` is rewritten. REQUIRES: it is
  // neither PUT nor DELETE. Fails: never; where memory runs out the answer is 503.
  Answer Handle(const Route& route, Method method, std::string& body) const noexcept;

  // Names the model that is served under the answer's id where no model gave the answer, except to
  // who may not ask. Fails: std::bad_alloc.
  void AddModel(Answer& answer) const;

  // Whether the answer takes so little time that it may be given at once.
  bool IsQuick(const Route& route, Method method, std::string_view body) const;

  // Whether the service is to get requests: not before its models are loaded, and not once it ends.
  void SetReady(bool ready) { ready_ = ready; }

 private:
  Answer Answered(const Route& route, Method method, std::string& body) const;
  Answer PageAnswer(const Route& route) const;
  Answer WithModel(const Route& route, Method method, std::string& body) const;
  void Score(const Route& route, const ServedModel& model, std::string& body, Answer& answer) const;

  const ModelStore& store_;
  Metrics& metrics_;
  ServiceParts parts_;
  std::atomic<bool> ready_{false};
};

}  // namespace svmscore::serve

#endif  // TOOLS_SERVE_SERVICE_H_
