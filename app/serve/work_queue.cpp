#include "app/serve/work_queue.h"

#include <utility>

namespace svmscore::app {

WorkQueue::WorkQueue(std::size_t threads, std::size_t most_waiting) : most_waiting_(most_waiting) {
  for (std::size_t i = 0; i < threads; ++i) threads_.emplace_back([this] { Run(); });
}

WorkQueue::~WorkQueue() {
  {
    const std::lock_guard lock(mutex_);
    ends_ = true;
    waiting_.clear();
  }
  more_.notify_all();
  for (std::thread& thread : threads_) thread.join();
}

bool WorkQueue::Add(std::function<void()> work) {
  {
    const std::lock_guard lock(mutex_);
    if (ends_ || waiting_.size() >= most_waiting_) return false;
    waiting_.push_back(std::move(work));
  }
  more_.notify_one();
  return true;
}

void WorkQueue::Run() {
  std::unique_lock lock(mutex_);
  while (true) {
    more_.wait(lock, [this] { return ends_ || !waiting_.empty(); });
    if (ends_) return;
    const std::function<void()> work = std::move(waiting_.front());
    waiting_.pop_front();
    lock.unlock();
    work();
    lock.lock();
  }
}

}  // namespace svmscore::app
