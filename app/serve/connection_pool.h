// The connections of one thread.
#ifndef APP_SERVE_CONNECTION_POOL_H_
#define APP_SERVE_CONNECTION_POOL_H_

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <set>

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>

#include "app/serve/bounded_body.h"
#include "app/serve/server.h"
#include "app/serve/work_queue.h"

namespace svmscore::app {

class Connection;

// What all connections share.
struct SharedParts {
  ServerParts server;
  ByteBudget bodies;
  ByteBudget answers;
  std::unique_ptr<WorkQueue> workers;
  std::atomic<bool> drains{false};  // no connection takes another request
  std::atomic<std::uint64_t> requests{0};
};

// Watches over the time that connections take: where one has more than its share it is closed.
// [one thread], that of its context, but Context by any.
class ConnectionPool {
 public:
  using Socket = boost::asio::ip::tcp::socket;
  using Clock = std::chrono::steady_clock;

  ConnectionPool(SharedParts& shared, std::size_t most);
  ~ConnectionPool();

  boost::asio::io_context& Context() { return context_; }
  SharedParts& Shared() { return shared_; }
  // Takes a connection. Where there are as many as may be, the one that has let the server wait
  // longest makes room; where all are busy, the new one is turned away.
  void Take(Socket socket);
  void Forget(Connection& connection);
  // Ends the connection that has let the server wait longest. False where none has, or not long.
  bool MakeRoom();
  // Makes room for so many bytes by ending connections that keep memory of this kind and let the
  // server wait. False where there is not enough of these.
  bool MakeMemory(ByteBudget& budget, std::size_t bytes);
  // Closes connections without a request, and all once `at_once`.
  void Drain(bool at_once);
  bool IsEmpty() const { return connections_.empty(); }
  void Run();

 private:
  void Watch();
  bool EndStalled(ByteBudget& budget);

  SharedParts& shared_;
  std::size_t most_;
  boost::asio::io_context context_{1};
  boost::asio::steady_timer timer_{context_};
  std::set<std::shared_ptr<Connection>> connections_;
  bool ends_ = false;
};

}  // namespace svmscore::app

#endif  // APP_SERVE_CONNECTION_POOL_H_
