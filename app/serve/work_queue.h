// Threads that answer what takes longer, and what waits for them.
#ifndef APP_SERVE_WORK_QUEUE_H_
#define APP_SERVE_WORK_QUEUE_H_

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace svmscore::app {

// [any thread] Fails: std::bad_alloc.
class WorkQueue {
 public:
  WorkQueue(std::size_t threads, std::size_t most_waiting);
  // Drops what waits, and ends after what runs.
  ~WorkQueue();
  WorkQueue(const WorkQueue&) = delete;
  WorkQueue& operator=(const WorkQueue&) = delete;

  // False where too many wait. `work` must not throw.
  bool Add(std::function<void()> work);

 private:
  void Run();

  std::size_t most_waiting_;
  std::mutex mutex_;
  std::condition_variable more_;
  std::deque<std::function<void()>> waiting_;
  bool ends_ = false;
  std::vector<std::thread> threads_;
};

}  // namespace svmscore::app

#endif  // APP_SERVE_WORK_QUEUE_H_
