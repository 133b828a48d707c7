#include "app/serve/server.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <mutex>
#include <stop_token>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include <fmt/format.h>
#include <sys/resource.h>

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/signal_set.hpp>
#include <boost/asio/steady_timer.hpp>

#include "app/base/failure.h"
#include "app/serve/answer_head.h"
#include "app/serve/connection_pool.h"
#include "tools/serve/request_checks.h"

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
    const std::size_t most = AllowDescriptors();
    for (std::size_t i = 0; i < pools; ++i) {
      pools_.push_back(std::make_unique<ConnectionPool>(shared_, (most + pools - 1) / pools));
    }
    signals_.add(SIGTERM);
    signals_.add(SIGINT);
    signals_.async_wait([this](const ErrorCode& error, int) {
      if (!error) Drain();
    });
  }

  // Work that is under way posts its answers to the pools.
  ~Listener() {
    shared_.workers.reset();
    if (spare_ >= 0) close(spare_);
  }

  unsigned short Port() const { return acceptor_.local_endpoint().port(); }

  void Run(const std::function<void()>& load, const std::function<void()>& ready) {
    std::vector<std::thread> threads;
    for (const auto& pool : pools_) {
      guards_.emplace_back(pool->Context().get_executor());
      threads.emplace_back([&pool] { pool->Run(); });
    }
    Accept();
    threads.emplace_back([this] {
      context_.run();
      // A load may take long, and nobody waits for it any more.
      if (!loaded_) EndAtOnce(shared_.server.log, "before all models were loaded");
      guards_.clear();
    });
    std::exception_ptr failure;
    try {
      load();
    } catch (...) {
      failure = std::current_exception();
    }
    asio::post(context_, [this, &ready, failed = failure != nullptr] {
      loaded_ = true;
      if (failed) return End();
      if (shared_.drains) return;
      shared_.server.service.SetReady(true);
      ready();
    });
    for (std::thread& thread : threads) thread.join();
    if (failure) std::rethrow_exception(failure);
  }

 private:
  // A connection needs a descriptor, of which systems allow few until they are asked. Returns how
  // many connections there may be.
  std::size_t AllowDescriptors() const {
    constexpr rlim_t kOthers = 100;
    const std::size_t most = shared_.server.options.most_connections;
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return most;
    const rlim_t wanted = most + kOthers;
    if (limit.rlim_cur < wanted) {
      limit.rlim_cur = std::min(wanted, limit.rlim_max);
      setrlimit(RLIMIT_NOFILE, &limit);
      getrlimit(RLIMIT_NOFILE, &limit);
    }
    if (limit.rlim_cur >= wanted) return most;
    const rlim_t allowed =
        limit.rlim_cur > 2 * kOthers ? limit.rlim_cur - kOthers : limit.rlim_cur / 2;
    shared_.server.log.Event(
        "warning", {},
        fmt::format("the system allows {} open files, and so there may be only {} connections and "
                    "not {}; raise the limit (ulimit -n)",
                    limit.rlim_cur, allowed, most));
    return std::max<std::size_t>(allowed, 1);
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
      const bool taken = error == asio::error::address_in_use;
      throw Failure(
          kUsageError,
          fmt::format("--listen: cannot listen on {}, port {}: {}{}", options.address, options.port,
                      error.message(), taken ? "; name another port, or 0 for a free one" : ""));
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
          TurnAway();
          for (const auto& each : pools_) {
            asio::post(each->Context(), [&each] { each->MakeRoom(); });
          }
          ending_.expires_after(std::chrono::milliseconds(50));
          ending_.async_wait([this](const ErrorCode& cancelled) {
            if (!cancelled && acceptor_.is_open()) Accept();
          });
        });
  }

  // Tells the next client, by the descriptor kept for that, that there is no room.
  void TurnAway() {
    if (spare_ < 0) return;
    close(spare_);
    ErrorCode ignored;
    acceptor_.non_blocking(true, ignored);
    tcp::socket socket(context_);
    acceptor_.accept(socket, ignored);
    if (socket.is_open()) {
      shared_.server.metrics.CountRefusal();
      const serve::Answer answer = serve::ErrorAnswer({}, 503, "there are too many connections");
      const std::string text =
          HeadOf(answer, RequestId({}, shared_.requests), false, false) + answer.body;
      socket.non_blocking(true, ignored);
      socket.write_some(asio::buffer(text), ignored);
      socket.shutdown(tcp::socket::shutdown_send, ignored);
      std::array<char, 4096> sent{};  // unread bytes would reset the connection
      socket.read_some(asio::buffer(sent), ignored);
      socket.close(ignored);
    }
    spare_ = OpenSpare();
  }

  static int OpenSpare() { return open("/dev/null", O_RDONLY | O_CLOEXEC); }

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
      if (!error) EndAtOnce(shared_.server.log, kUnanswered);
    });
    // Work that has no end would keep its thread, and that the process.
    last_resort_ = std::jthread([this, time](const std::stop_token& ended) {
      std::unique_lock lock(mutex_);
      waits_.wait_for(lock, ended, time + std::chrono::seconds(1), [] { return false; });
      if (!ended.stop_requested()) EndAtOnce(shared_.server.log, kUnanswered);
    });
    AwaitEnd();
  }

  static constexpr const char* kUnanswered = "before all requests were answered";

  [[noreturn]] static void EndAtOnce(AccessLog& log, const char* when) {
    log.Event("ended", {}, when);
    log.Flush();
    std::_Exit(kDone);
  }

  // Looks whether all connections have ended, or the time is up.
  void AwaitEnd() {
    ending_.expires_after(std::chrono::milliseconds(20));
    ending_.async_wait([this](const ErrorCode&) {
      const bool late = std::chrono::steady_clock::now() >= deadline_;
      if (!late && shared_.server.metrics.Connections() > 0) return AwaitEnd();
      End();
    });
  }

  void End() {
    shared_.drains = true;
    ErrorCode ignored;
    acceptor_.close(ignored);
    for (const auto& pool : pools_) {
      asio::post(pool->Context(), [&pool] { pool->Drain(true); });
    }
    ending_.cancel();
    signals_.cancel();
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
  std::atomic<bool> loaded_{false};
  // Of the thread that ends the process where it does not end by itself.
  std::mutex mutex_;
  std::condition_variable_any waits_;
  std::jthread last_resort_;
  int spare_ = OpenSpare();
};

Server::Server(const ServerParts& parts) : listener_(std::make_unique<Listener>(parts)) {}
Server::~Server() = default;

unsigned short Server::Port() const {
  return listener_->Port();
}

void Server::Run(const std::function<void()>& load, const std::function<void()>& ready) {
  listener_->Run(load, ready);
}

}  // namespace svmscore::app
