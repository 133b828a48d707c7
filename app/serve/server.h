// The server: accepts connections and gives each to one of its threads.
#ifndef APP_SERVE_SERVER_H_
#define APP_SERVE_SERVER_H_

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
  // Serves until SIGTERM or SIGINT, and then until what runs is done, but no longer than the
  // options say; a second signal ends it at once.
  void Run();

 private:
  class Listener;
  std::unique_ptr<Listener> listener_;
};

}  // namespace svmscore::app

#endif  // APP_SERVE_SERVER_H_
