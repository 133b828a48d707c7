#include "fuzz/memory_file.h"

#include <sys/mman.h>
#include <unistd.h>

#include "fuzz/promise.h"

namespace svmscore::fuzz {

MemoryFile::MemoryFile(std::string_view content)
    : descriptor_(memfd_create("input", MFD_CLOEXEC)),
      path_("/proc/self/fd/" + std::to_string(descriptor_)) {
  Promise(descriptor_ >= 0, "the kernel gives a file in memory");
  while (!content.empty()) {
    const ssize_t written = write(descriptor_, content.data(), content.size());
    Promise(written > 0, "a file in memory takes what is written");
    content.remove_prefix(static_cast<std::size_t>(written));
  }
}

MemoryFile::~MemoryFile() {
  close(descriptor_);
}

}  // namespace svmscore::fuzz
