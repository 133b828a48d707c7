// The server: accepts connections and gives each to one of its threads.
#ifndef APP_SERVE_SERVER_H_
#define APP_SERVE_SERVER_H_

#include <functional>
#include <memory>

#include "app/serve/access_log.h"
#include "app/serve/model_keeper.h"
#include "app/serve/serve_options.h"
#include "tools/serve/metrics.h"
#include "tools/serve/service.h"

namespace svmscore::app {

// What connections work with.
struct ServerParts {
  const ServeOptions& options;
  serve::Service& service;
  serve::Metrics& metrics;
  ModelKeeper& keeper;
  AccessLog& log;
};

// Lives: the parts, longer than this.
class Server {
 public:
  // Listens. Fails: Failure(kUsageError) where the address cannot be listened on.
  explicit Server(const ServerParts& parts);
  ~Server();

  unsigned short Port() const;
  // Serves, being not ready until `load` has returned, which is called on this thread, and `ready`
  // after it on another one; until SIGTERM or SIGINT, and then until what runs is done, but no
  // longer than the options say. A second signal ends it at once, and so does the first one where
  // `load` has not returned when all requests are answered. Passes on what `load` throws.
  void Run(const std::function<void()>& load, const std::function<void()>& ready);

 private:
  class Listener;
  std::unique_ptr<Listener> listener_;
};

}  // namespace svmscore::app

#endif  // APP_SERVE_SERVER_H_
