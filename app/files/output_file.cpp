#include "app/files/output_file.h"

#include <cerrno>
#include <charconv>
#include <climits>
#include <cstdio>
#include <filesystem>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fmt/format.h>

#include "app/base/failure.h"
#include "app/files/ending_signals.h"
#include "app/files/named_file.h"
#include "tools/base/error_text.h"

namespace svmscore::app {
namespace {

namespace fs = std::filesystem;

// The mode of a file that open() would create.
mode_t CreationMode() {
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

int CopyOf(int descriptor) {
  return fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
}

// A copy of the descriptor of this process, which goes on where that stands; of another process,
// its file at its end. Negative, and errno, where that fails.
int OpenDescriptor(const fs::path& path) {
  std::error_code unknown;
  if (!fs::equivalent(path.parent_path(), "/proc/self/fd", unknown)) {
    return open(path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
  }
  const std::string name = path.filename().string();
  int number = -1;
  std::from_chars(name.data(), name.data() + name.size(), number);
  return CopyOf(number);
}

// Standard output or standard error where that is the file, and can be written; else -1.
int StreamAt(const struct stat& file) {
  for (const int stream : {STDOUT_FILENO, STDERR_FILENO}) {
    struct stat about {};
    if (fstat(stream, &about) != 0 || about.st_dev != file.st_dev || about.st_ino != file.st_ino) {
      continue;
    }
    if ((fcntl(stream, F_GETFL) & O_ACCMODE) != O_RDONLY) return stream;
  }
  return -1;
}

// What the unfinished file is called: the name, shortened by whole characters where the system
// would not take the longer one.
std::string PatternFor(const fs::path& target) {
  constexpr std::string_view kSuffix = ".unfinished-XXXXXX";
  std::string name = target.filename().string();
  if (name.size() > NAME_MAX - kSuffix.size()) {
    std::size_t kept = NAME_MAX - kSuffix.size();
    while (kept > 0 && (static_cast<unsigned char>(name[kept]) & 0xC0U) == 0x80U) --kept;
    name.resize(kept);
  }
  return (target.parent_path() / name.append(kSuffix)).string();
}

}  // namespace

bool IsWrittenInPlace(const std::string& path) {
  if (path == "-" || IsDescriptor(FollowLinks(path))) return true;
  struct stat about {};
  if (stat(path.c_str(), &about) != 0) return false;
  return !S_ISREG(about.st_mode) || StreamAt(about) >= 0;
}

OutputFile::OutputFile(const std::string& path) : name_(path) {
  if (path == "-") {
    name_ = "standard output";
    descriptor_ = STDOUT_FILENO;
    return;
  }
  struct stat about {};
  const bool exists = stat(path.c_str(), &about) == 0;
  if (!exists && errno != ENOENT) Fail(errno);
  const fs::path target = FollowLinks(path);
  const int stream = exists ? StreamAt(about) : -1;
  const bool is_descriptor = IsDescriptor(target);
  if (is_descriptor || stream >= 0 || (exists && !S_ISREG(about.st_mode))) {
    descriptor_ = is_descriptor ? OpenDescriptor(target)
                  : stream >= 0 ? CopyOf(stream)
                                : open(path.c_str(), O_WRONLY | O_CLOEXEC);
    if (descriptor_ < 0) Fail(errno);
    return;
  }
  if (exists && access(path.c_str(), W_OK) != 0) Fail(errno);
  target_ = target.string();
  OpenTemporary();
  fchmod(descriptor_, exists ? about.st_mode & 07777 : CreationMode());
}

void OutputFile::OpenTemporary() {
  HandleEndingSignals();
  const HoldEndingSignals hold;
  std::string pattern = PatternFor(target_);
  descriptor_ = mkostemp(pattern.data(), O_CLOEXEC);
  if (descriptor_ < 0) Fail(errno);
  temporary_ = pattern;
  RemoveWhenEnded(temporary_);
}

OutputFile::~OutputFile() {
  CloseAndRemove();
}

void OutputFile::Write(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = write(descriptor_, bytes.data(), bytes.size());
    if (count >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(count));
    } else if (errno != EINTR) {
      Fail(errno);
    }
  }
}

void OutputFile::Commit() {
  if (target_.empty()) return;
  // Some disks report that they are full only now; a file system that cannot sync is none of them.
  if (fsync(descriptor_) != 0 && errno != EINVAL && errno != ENOSYS) Fail(errno);
  const int closed = close(descriptor_);
  descriptor_ = -1;
  if (closed != 0) Fail(errno);
  if (std::rename(temporary_.c_str(), target_.c_str()) != 0) Fail(errno);
  RemoveWhenEnded({});
  temporary_.clear();
}

void OutputFile::Fail(int error) const {
  // Who closes a pipe has seen enough.
  if (error == EPIPE) throw Failure(kOutputError, "");
  throw Failure(kOutputError, fmt::format("cannot write {}: {}", name_, tools::ErrorText(error)));
}

void OutputFile::CloseAndRemove() noexcept {
  if (descriptor_ > STDERR_FILENO) close(descriptor_);
  descriptor_ = -1;
  if (temporary_.empty()) return;
  unlink(temporary_.c_str());
  RemoveWhenEnded({});
  temporary_.clear();
}

}  // namespace svmscore::app
