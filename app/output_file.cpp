#include "app/output_file.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fmt/format.h>

#include "app/ending_signals.h"
#include "app/failure.h"
#include "app/system_error.h"

namespace svmscore::app {
namespace {

namespace fs = std::filesystem;

// The mode of a file that open() would create.
mode_t CreationMode() {
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

// The system itself refuses longer chains of links.
constexpr int kMostLinks = 40;

// A link is followed, so that the file behind it is replaced, or made, and the link stays.
std::string FollowLinks(const std::string& path) {
  fs::path target = path;
  for (int links = 0; links < kMostLinks; ++links) {
    std::error_code no_link;
    const fs::path next = fs::read_symlink(target, no_link);
    if (no_link) break;
    target = target.parent_path() / next;
  }
  return target.string();
}

}  // namespace

OutputFile::OutputFile(const std::string& path) : name_(path) {
  if (path == "-") {
    name_ = "standard output";
    descriptor_ = STDOUT_FILENO;
    return;
  }
  struct stat about {};
  const bool exists = stat(path.c_str(), &about) == 0;
  if (!exists && errno != ENOENT) Fail(errno);
  if (exists && !S_ISREG(about.st_mode)) {
    descriptor_ = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    if (descriptor_ < 0) Fail(errno);
    return;
  }
  if (exists && access(path.c_str(), W_OK) != 0) Fail(errno);
  target_ = FollowLinks(path);
  OpenTemporary();
  fchmod(descriptor_, exists ? about.st_mode & 07777 : CreationMode());
}

void OutputFile::OpenTemporary() {
  HandleEndingSignals();
  const HoldEndingSignals hold;
  std::string pattern = target_ + ".unfinished-XXXXXX";
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
  throw Failure(kOutputError, fmt::format("cannot write {}: {}", name_, ErrorText(error)));
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
