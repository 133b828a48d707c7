#include "app/serve/access_log.h"

#include <chrono>
#include <ctime>

#include <unistd.h>

#include <fmt/chrono.h>
#include <fmt/format.h>

#include "tools/base/json_string.h"
#include "tools/serve/served_model.h"

namespace svmscore::app {
namespace {

constexpr std::size_t kMostWaiting = std::size_t{4} << 20;

void WriteOut(std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(STDERR_FILENO, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return;  // a log that nobody reads ends nothing
    text.remove_prefix(static_cast<std::size_t>(written));
  }
}

}  // namespace

std::string TimeStamp() {
  const std::int64_t now = serve::Now();
  const std::time_t seconds = now / 1000;
  return fmt::format("{:%Y-%m-%dT%H:%M:%S}.{:03}Z", fmt::gmtime(seconds), now % 1000);
}

AccessLog::AccessLog() : thread_([this] { Run(); }) {}

AccessLog::~AccessLog() {
  {
    const std::lock_guard lock(mutex_);
    ends_ = true;
  }
  more_.notify_one();
  thread_.join();
}

void AccessLog::Write(std::string_view line) {
  bool first = false;
  {
    const std::lock_guard lock(mutex_);
    if (waiting_.size() > kMostWaiting) {
      ++left_out_;
      return;
    }
    first = waiting_.empty();
    waiting_ += line;
    waiting_ += '\n';
  }
  if (first) more_.notify_one();
}

void AccessLog::Event(std::string_view event, std::string_view model, std::string_view message) {
  std::string line = "{\"time\":\"" + TimeStamp() + "\",\"event\":";
  tools::AppendJsonString(line, event);
  if (!model.empty()) {
    line += ",\"model\":";
    tools::AppendJsonString(line, model);
  }
  line += ",\"message\":";
  tools::AppendJsonString(line, message);
  line += '}';
  Write(line);
}

void AccessLog::Flush() {
  std::unique_lock lock(mutex_);
  written_.wait_for(lock, std::chrono::seconds(1), [this] { return waiting_.empty() && !writes_; });
}

void AccessLog::Run() {
  using std::chrono::milliseconds;
  std::string text;
  std::unique_lock lock(mutex_);
  while (!ends_ || !waiting_.empty()) {
    more_.wait(lock, [this] { return ends_ || !waiting_.empty(); });
    text.swap(waiting_);
    waiting_.clear();
    if (left_out_ > 0) {
      text += fmt::format(
          "{{\"time\":\"{}\",\"event\":\"log\",\"message\":\"{} lines were left "
          "out\"}}\n",
          TimeStamp(), left_out_);
      left_out_ = 0;
    }
    const bool ends = ends_;
    writes_ = true;
    lock.unlock();
    WriteOut(text);
    lock.lock();
    writes_ = false;
    written_.notify_all();
    if (ends) continue;
    lock.unlock();
    // Lines of many requests are written at once.
    std::this_thread::sleep_for(milliseconds(20));
    lock.lock();
  }
}

}  // namespace svmscore::app
