#include "host/scoring_log.h"

#include <cstdarg>
#include <cstdlib>

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
  std::fprintf(out, "svmscore log: %s\n", line);
  std::fflush(out);
}

bool ScoringLog::SetFile(const std::string& path) {
  std::FILE* file = std::fopen(path.c_str(), "a");
  if (file == nullptr) return false;
  const std::lock_guard<std::mutex> lock(mutex_);
  if (file_ != nullptr) std::fclose(file_);
  file_ = file;
  return true;
}

}  // namespace MCZandor_850
