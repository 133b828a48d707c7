#include "app/serve/server.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <thread>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <sys/resource.h>

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/signal_set.hpp>
#include <boost/asio/steady_timer.hpp>

#include "app/base/failure.h"
#include "app/serve/connection_pool.h"

namespace svmscore::app {
namespace {

namespace asio = boost::asio;
using asio::ip::tcp;
using ErrorCode = boost::system::error_code;

std::size_t Cores() {
  return std::max(std::thread::hardware_concurrency(), 1U);
}

// So many threads wait for connections: each answers what is quick, the others score what is not.
std::size_t PoolCount() {
  return std::clamp<std::size_t>(Cores() / 2, 1, 8);
}

}  // namespace

class Server::Listener {
 public:
  explicit Listener(const ServerParts& parts)
      : shared_{parts, {}, {}, nullptr},
        signals_(context_),
        acceptor_(context_),
        ending_(context_) {
    shared_.bodies.most = parts.options.most_bodies;
    shared_.answers.most = parts.options.most_answers;
    Listen();
    const int threads = parts.options.threads;
    shared_.workers = std::make_unique<WorkQueue>(
        threads > 0 ? static_cast<std::size_t>(threads) : Cores(), parts.options.most_waiting);
    const std::size_t pools = PoolCount();
    for (std::size_t i = 0; i < pools; ++i) {
      pools_.push_back(std::make_unique<ConnectionPool>(
          shared_, (parts.options.most_connections + pools - 1) / pools));
    }
  }

  // Work that is under way posts its answers to the pools.
  ~Listener() { shared_.workers.reset(); }

  unsigned short Port() const { return acceptor_.local_endpoint().port(); }

  void Run() {
    AllowDescriptors();
    signals_.add(SIGTERM);
    signals_.add(SIGINT);
    signals_.async_wait([this](const ErrorCode& error, int) {
      if (!error) Drain();
    });
    std::vector<std::thread> threads;
    for (const auto& pool : pools_) {
      guards_.emplace_back(pool->Context().get_executor());
      threads.emplace_back([&pool] { pool->Run(); });
    }
    Accept();
    context_.run();
    guards_.clear();
    for (std::thread& thread : threads) thread.join();
  }

 private:
  // A connection needs a descriptor, of which systems allow few until they are asked.
  void AllowDescriptors() const {
    constexpr rlim_t kOthers = 100;
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
    const rlim_t wanted = shared_.server.options.most_connections + kOthers;
    if (limit.rlim_cur >= wanted) return;
    limit.rlim_cur = std::min(wanted, limit.rlim_max);
    setrlimit(RLIMIT_NOFILE, &limit);
  }

  void Listen() {
    const ServeOptions& options = shared_.server.options;
    ErrorCode error;
    const auto address = asio::ip::make_address(options.address, error);
    if (error) {
      throw Failure(kUsageError, fmt::format("--listen: \"{}\" is no address; give one as in "
                                             "127.0.0.1:8080 or [::1]:8080",
                                             options.address));
    }
    const tcp::endpoint endpoint(address, options.port);
    acceptor_.open(endpoint.protocol(), error);
    if (!error) acceptor_.set_option(tcp::acceptor::reuse_address(true), error);
    if (!error) acceptor_.bind(endpoint, error);
    if (!error) acceptor_.listen(asio::socket_base::max_listen_connections, error);
    if (error) {
      throw Failure(kUsageError, fmt::format("--listen: cannot listen on {}, port {}: {}",
                                             options.address, options.port, error.message()));
    }
  }

  void Accept() {
    ConnectionPool& pool = *pools_[next_++ % pools_.size()];
    acceptor_.async_accept(
        pool.Context(), [this, &pool](const ErrorCode& error, tcp::socket socket) {
          if (!acceptor_.is_open()) return;
          if (!error) {
            asio::post(pool.Context(), [&pool, taken = std::move(socket)]() mutable {
              pool.Take(std::move(taken));
            });
            return Accept();
          }
          // There are no descriptors left, most likely: some connection has to end before.
          ending_.expires_after(std::chrono::milliseconds(50));
          ending_.async_wait([this](const ErrorCode& cancelled) {
            if (!cancelled && acceptor_.is_open()) Accept();
          });
        });
  }

  void Drain() {
    shared_.server.service.SetReady(false);
    shared_.server.log.Event("draining", {}, "no new connection is taken");
    shared_.drains = true;
    ErrorCode ignored;
    acceptor_.close(ignored);
    ending_.cancel();
    for (const auto& pool : pools_) {
      asio::post(pool->Context(), [&pool] { pool->Drain(false); });
    }
    const std::chrono::seconds time(shared_.server.options.drain_seconds);
    deadline_ = std::chrono::steady_clock::now() + time;
    signals_.async_wait([this](const ErrorCode& error, int) {
      if (!error) EndAtOnce(shared_.server.log);
    });
    // Work that has no end would keep its thread, and that the process.
    std::thread([&log = shared_.server.log, time] {
      std::this_thread::sleep_for(time + std::chrono::seconds(1));
      EndAtOnce(log);
    }).detach();
    AwaitEnd();
  }

  [[noreturn]] static void EndAtOnce(AccessLog& log) {
    log.Event("ended", {}, "before all requests were answered");
    log.Flush();
    std::_Exit(kDone);
  }

  // Looks whether all connections have ended, or the time is up.
  void AwaitEnd() {
    ending_.expires_after(std::chrono::milliseconds(20));
    ending_.async_wait([this](const ErrorCode&) {
      const bool late = std::chrono::steady_clock::now() >= deadline_;
      if (!late && shared_.server.metrics.Connections() > 0) return AwaitEnd();
      for (const auto& pool : pools_) {
        asio::post(pool->Context(), [&pool] { pool->Drain(true); });
      }
      signals_.cancel();
    });
  }

  SharedParts shared_;
  asio::io_context context_{1};
  asio::signal_set signals_;
  tcp::acceptor acceptor_;
  asio::steady_timer ending_;
  std::chrono::steady_clock::time_point deadline_;
  std::vector<std::unique_ptr<ConnectionPool>> pools_;
  std::vector<asio::executor_work_guard<asio::io_context::executor_type>> guards_;
  std::size_t next_ = 0;
};

Server::Server(const ServerParts& parts) : listener_(std::make_unique<Listener>(parts)) {}
Server::~Server() = default;

unsigned short Server::Port() const {
  return listener_->Port();
}

void Server::Run() {
  listener_->Run();
}

}  // namespace svmscore::app
