#include "app/serve/connection_pool.h"

#include <algorithm>
#include <exception>
#include <utility>
#include <vector>

#include <boost/asio/post.hpp>

#include "app/serve/connection.h"

namespace svmscore::app {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kWatch{250};
// A client that has let the server wait for so long may have to make room.
constexpr milliseconds kPatience{1000};

}  // namespace

ConnectionPool::ConnectionPool(SharedParts& shared, std::size_t most)
    : shared_(shared), most_(most) {}

ConnectionPool::~ConnectionPool() = default;

void ConnectionPool::Take(Socket socket) {
  auto connection = std::make_shared<Connection>(*this, std::move(socket));
  const bool room = connections_.size() < most_ || MakeRoom();
  connections_.insert(connection);
  shared_.server.metrics.CountConnection(1);
  if (room) {
    connection->Start();
  } else {
    shared_.server.metrics.CountRefusal();
    connection->Refuse();
  }
}

void ConnectionPool::Forget(Connection& connection) {
  if (connections_.erase(connection.shared_from_this()) > 0) {
    shared_.server.metrics.CountConnection(-1);
  }
}

bool ConnectionPool::MakeRoom() {
  const auto longer = [](const auto& a, const auto& b) {
    if (a->IsWaiting() != b->IsWaiting()) return a->IsWaiting();
    return a->Since() < b->Since();
  };
  const auto longest = std::min_element(connections_.begin(), connections_.end(), longer);
  if (longest == connections_.end() || !(*longest)->IsWaiting()) return false;
  if (Clock::now() - (*longest)->Since() < kPatience) return false;
  // Closing takes it from the list.
  const std::shared_ptr<Connection> connection = (*longest)->shared_from_this();
  connection->Close();
  return true;
}

bool ConnectionPool::EndStalled(ByteBudget& budget) {
  std::shared_ptr<Connection> longest;
  const Clock::time_point now = Clock::now();
  for (const auto& connection : connections_) {
    if (!connection->Keeps(budget)) continue;
    if (now - connection->Since() < kPatience && !connection->IsSlowReader(now)) continue;
    if (longest == nullptr || connection->Since() < longest->Since()) longest = connection;
  }
  if (longest == nullptr) return false;
  longest->GiveWay();
  return true;
}

bool ConnectionPool::MakeMemory(ByteBudget& budget, std::size_t bytes) {
  while (budget.Lacks(bytes)) {
    if (!EndStalled(budget)) return false;
  }
  return true;
}

void ConnectionPool::Drain(bool at_once) {
  const std::vector<std::shared_ptr<Connection>> all(connections_.begin(), connections_.end());
  for (const auto& connection : all) {
    if (at_once || connection->IsIdle()) connection->Close();
  }
  if (at_once) {
    ends_ = true;
    timer_.cancel();
  }
}

void ConnectionPool::Run() {
  while (true) {
    Watch();
    try {
      context_.run();
      return;
    } catch (const std::exception& error) {
      // One connection cannot go on, and ends when its time is up; the others do.
      shared_.server.log.Event("error", {}, error.what());
    }
  }
}

void ConnectionPool::Watch() {
  timer_.expires_after(kWatch);
  timer_.async_wait([this](const boost::system::error_code& error) {
    if (error || ends_) return;
    const Clock::time_point now = Clock::now();
    const std::vector<std::shared_ptr<Connection>> all(connections_.begin(), connections_.end());
    for (const auto& connection : all) {
      connection->Check(now);
      if (shared_.drains && connection->IsIdle()) connection->Close();
    }
    // Those of other threads may need what connections of this one keep.
    if (shared_.bodies.IsShort()) EndStalled(shared_.bodies);
    if (shared_.answers.IsShort()) EndStalled(shared_.answers);
    Watch();
  });
}

}  // namespace svmscore::app
