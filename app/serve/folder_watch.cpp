#include "app/serve/folder_watch.h"

#include <array>
#include <cstdint>
#include <new>

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <unistd.h>

namespace svmscore::app {
namespace {

// Takes whatever there is to read.
bool Drain(int descriptor) {
  alignas(inotify_event) std::array<char, 4096> buffer;
  bool any = false;
  while (read(descriptor, buffer.data(), buffer.size()) > 0) any = true;
  return any;
}

}  // namespace

FolderWatch::FolderWatch(const std::string& folder)
    : wake_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (wake_ < 0) throw std::bad_alloc();
  if (folder.empty()) return;
  notices_ = inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
  if (notices_ < 0) return;
  constexpr std::uint32_t kChanges =
      IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE | IN_ATTRIB;
  if (inotify_add_watch(notices_, folder.c_str(), kChanges) < 0) {
    close(notices_);
    notices_ = -1;
  }
}

FolderWatch::~FolderWatch() {
  if (notices_ >= 0) close(notices_);
  close(wake_);
}

bool FolderWatch::Wait(int milliseconds) {
  std::array<pollfd, 2> both = {{{wake_, POLLIN, 0}, {notices_, POLLIN, 0}}};
  poll(both.data(), both.size(), milliseconds);
  if ((both[0].revents & POLLIN) != 0) Drain(wake_);
  return (both[1].revents & POLLIN) != 0 && Drain(notices_);
}

void FolderWatch::Wake() noexcept {
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t written = write(wake_, &one, sizeof one);
}

}  // namespace svmscore::app
