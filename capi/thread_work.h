// Work that several threads of one call share.
#ifndef CAPI_THREAD_WORK_H_
#define CAPI_THREAD_WORK_H_

#include <atomic>
#include <cstddef>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace svmscore::capi {

// How many threads a caller's `threads` means, the option of that name. Throws a Refusal.
std::size_t ThreadsOf(int threads);

// Does the blocks 0 ... `blocks` - 1, each once, on up to so many threads, this one among them.
// Each thread calls make(its number), once, and what that returns with the number of each block
// that it takes. Where something is thrown, the others end after their blocks, and it is thrown
// here. REQUIRES: threads > 0.
template <typename Make>
void ShareWork(std::size_t blocks, std::size_t threads, const Make& make) {
  std::atomic<std::size_t> next{0};
  std::mutex failing;
  std::exception_ptr failed;
  const auto work = [&](std::size_t thread) noexcept {
    try {
      auto run = make(thread);
      for (std::size_t block = next++; block < blocks; block = next++) run(block);
    } catch (...) {
      const std::lock_guard lock(failing);
      failed = std::current_exception();
      next = blocks;  // the others end
    }
  };
  {
    std::vector<std::jthread> others;
    others.reserve(threads);
    try {
      for (std::size_t t = 1; t < threads; ++t) others.emplace_back(work, t);
    } catch (const std::system_error&) {  // the system gives no more threads: fewer do it too
    }
    work(0);
  }
  if (failed) std::rethrow_exception(failed);
}

}  // namespace svmscore::capi

#endif  // CAPI_THREAD_WORK_H_
