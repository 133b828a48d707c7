// The log of the service: one JSON object a line on standard error.
#ifndef APP_SERVE_ACCESS_LOG_H_
#define APP_SERVE_ACCESS_LOG_H_

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

namespace svmscore::app {

// Lines wait for a thread of their own, so that a slow reader of standard error keeps no request
// waiting; of more than a few megabytes that wait, further lines are left out, and counted.
// [any thread] Fails: std::bad_alloc.
class AccessLog {
 public:
  AccessLog();
  // Writes what waits.
  ~AccessLog();
  AccessLog(const AccessLog&) = delete;
  AccessLog& operator=(const AccessLog&) = delete;

  // `line` is a JSON object without a line end.
  void Write(std::string_view line);
  // An event that is no request: {"time", "event", "model", "message"}.
  void Event(std::string_view event, std::string_view model, std::string_view message);
  // Returns when all lines so far are written, or after a second where nobody reads them.
  void Flush();

 private:
  void Run();

  std::mutex mutex_;
  std::condition_variable more_;
  std::condition_variable written_;
  std::string waiting_;
  std::uint64_t left_out_ = 0;
  bool ends_ = false;
  bool writes_ = false;  // lines that wait no longer are being written
  std::thread thread_;
};

// Now as RFC 3339 has it, with milliseconds.
std::string TimeStamp();

}  // namespace svmscore::app

#endif  // APP_SERVE_ACCESS_LOG_H_
