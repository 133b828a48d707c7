#include "app/files/named_file.h"

#include <optional>

#include <sys/stat.h>
#include <unistd.h>

namespace svmscore::app {
namespace {

namespace fs = std::filesystem;

// The system itself refuses longer chains of links.
constexpr int kMostLinks = 40;

fs::path FolderOf(const fs::path& path) {
  return path.has_parent_path() ? path.parent_path() : ".";
}

struct Identity {
  dev_t device;
  ino_t inode;
  std::string name;  // within that folder, of a file that does not exist yet
  bool operator==(const Identity&) const = default;
};

std::optional<Identity> IdentityOf(const NamedFile& file) {
  struct stat about {};
  if (file.path == "-" && file.stream != Stream::kNeither) {
    const int stream = file.stream == Stream::kInput ? STDIN_FILENO : STDOUT_FILENO;
    if (fstat(stream, &about) != 0) return std::nullopt;
  } else if (stat(file.path.c_str(), &about) != 0) {
    const fs::path target = FollowLinks(file.path);
    if (stat(FolderOf(target).c_str(), &about) != 0) return std::nullopt;
    return Identity{about.st_dev, about.st_ino, target.filename().string()};
  }
  if (!S_ISREG(about.st_mode)) return std::nullopt;
  return Identity{about.st_dev, about.st_ino, {}};
}

}  // namespace

fs::path FollowLinks(const std::string& path) {
  fs::path target = path;
  for (int links = 0; links < kMostLinks && !IsDescriptor(target); ++links) {
    std::error_code no_link;
    const fs::path next = fs::read_symlink(target, no_link);
    if (no_link) break;
    target = target.parent_path() / next;
  }
  return target;
}

bool IsDescriptor(const fs::path& path) {
  std::error_code no_folder;
  const fs::path folder = fs::canonical(FolderOf(path), no_folder);
  return !no_folder && folder.string().starts_with("/proc/") && folder.filename() == "fd";
}

bool IsSameFile(const NamedFile& one, const NamedFile& other) {
  const auto identity = IdentityOf(one);
  return identity && identity == IdentityOf(other);
}

}  // namespace svmscore::app
