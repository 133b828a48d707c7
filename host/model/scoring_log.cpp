#include "host/model/scoring_log.h"

#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <new>

#include "host/text/printable.h"

namespace MCZandor_850 {

ScoringLog::ScoringLog() {
  const char* level = std::getenv("SVMSCORE_LOG");
  if (level != nullptr) SetLevel(std::atoi(level));
}

ScoringLog::~ScoringLog() {
  if (file_ != nullptr) std::fclose(file_);
}

ScoringLog& ScoringLog::GetInstance() {
  static ScoringLog log;
  return log;
}

void ScoringLog::TraceText(int level, const char* format, ...) noexcept {
  if (level > GetLevel() || format == nullptr) return;
  constexpr std::size_t kLongest = 2000;
  char line[kLongest];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(line, kLongest, format, arguments);
  va_end(arguments);
  const std::lock_guard<std::mutex> lock(mutex_);
  std::FILE* out = file_ != nullptr ? file_ : stderr;
  bool written = false;
  errno = 0;
  try {
    written = std::fprintf(out, "svmscore log: %s\n", svmscore::Printable(line).c_str()) >= 0 &&
              std::fflush(out) == 0;
  } catch (const std::bad_alloc&) {
    errno = ENOMEM;
  }
  if (!written && file_ != nullptr && WriteError() == 0) write_error_ = errno != 0 ? errno : EIO;
}

bool ScoringLog::SetFile(const std::string& path) {
  std::FILE* file = std::fopen(path.c_str(), "a");
  if (file == nullptr) return false;
  const std::lock_guard<std::mutex> lock(mutex_);
  if (file_ != nullptr) std::fclose(file_);
  file_ = file;
  write_error_ = 0;
  return true;
}

}  // namespace MCZandor_850
