#include "tools/serve/model_files.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fmt/format.h>

#include "tools/base/error_text.h"
#include "tools/serve/route.h"

namespace svmscore::serve {
namespace {

// Names that begin with a dot are no models.
constexpr std::string_view kUnfinished = ".unfinished-";

[[noreturn]] void Fail(const char* what, const std::string& path, int error) {
  throw FileFault(fmt::format("cannot {} {}: {}", what, path, tools::ErrorText(error)));
}

[[noreturn]] void RefuseLong(const std::string& path, std::size_t most) {
  throw FileFault(fmt::format("{} has more than {} bytes", path, most));
}

// A descriptor that is closed at the end.
class Descriptor {
 public:
  explicit Descriptor(int descriptor) : descriptor_(descriptor) {}
  ~Descriptor() {
    if (descriptor_ >= 0) close(descriptor_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int Get() const { return descriptor_; }

 private:
  int descriptor_;
};

bool TakeOff(std::string& name, std::string_view ending) {
  if (!name.ends_with(ending)) return false;
  name.resize(name.size() - ending.size());
  return true;
}

FileMark MarkFrom(const struct stat& about) {
  const auto nanoseconds = [](const timespec& time) {
    return time.tv_sec * std::int64_t{1000000000} + time.tv_nsec;
  };
  return {about.st_dev, about.st_ino, static_cast<std::uint64_t>(about.st_size),
          nanoseconds(about.st_mtim), nanoseconds(about.st_ctim)};
}

void Flush(const std::string& folder) {
  const Descriptor descriptor(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (descriptor.Get() < 0 || fsync(descriptor.Get()) != 0) Fail("flush", folder, errno);
}

void WriteAll(int descriptor, std::string_view bytes, const std::string& path) {
  while (!bytes.empty()) {
    const ssize_t written = write(descriptor, bytes.data(), bytes.size());
    if (written < 0 && errno != EINTR) Fail("write", path, errno);
    if (written > 0) bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  if (fsync(descriptor) != 0) Fail("write", path, errno);
}

std::vector<std::string> NamesIn(const std::string& folder) {
  std::vector<std::string> names;
  std::error_code error;
  std::filesystem::directory_iterator entries(folder, error);
  while (!error && entries != std::filesystem::directory_iterator()) {
    names.push_back(entries->path().filename().string());
    entries.increment(error);
  }
  if (error) Fail("read", folder, error.value());
  std::sort(names.begin(), names.end());
  return names;
}

// The name of a document without its endings; empty for other files.
std::string StemOf(const std::string& name) {
  std::string stem = name;
  if (!TakeOff(stem, ".gz")) TakeOff(stem, ".zst");
  return TakeOff(stem, ".pmml") || TakeOff(stem, ".xml") ? stem : std::string();
}

}  // namespace

std::string IdOfFile(const std::string& name) {
  const std::string stem = StemOf(name);
  return IsModelId(stem) ? stem : std::string();
}

std::map<std::string, ModelFile> FilesIn(const std::string& folder,
                                         std::set<std::string>* nameless) {
  std::map<std::string, ModelFile> files;
  for (const std::string& name : NamesIn(folder)) {
    const std::string id = IdOfFile(name);
    const std::string path = fmt::format("{}/{}", folder, name);
    if (id.empty()) {
      const bool is_document = !name.starts_with('.') && !StemOf(name).empty();
      if (nameless != nullptr && is_document) nameless->insert(path);
      continue;
    }
    struct stat about {};
    if (stat(path.c_str(), &about) != 0 || !S_ISREG(about.st_mode)) continue;
    const auto other = files.find(id);
    if (other == files.end()) {
      files[id] = {path, MarkFrom(about), 0};
    } else if (name == id + ".pmml") {
      other->second = {path, MarkFrom(about), other->second.others + 1};
    } else {
      ++other->second.others;
    }
  }
  return files;
}

std::vector<std::string> FilesOf(const std::string& folder, const std::string& id) {
  std::vector<std::string> paths;
  for (const std::string& name : NamesIn(folder)) {
    if (IdOfFile(name) != id) continue;
    const std::string path = fmt::format("{}/{}", folder, name);
    struct stat about {};
    if (lstat(path.c_str(), &about) != 0 || S_ISDIR(about.st_mode)) continue;
    paths.insert(name == id + ".pmml" ? paths.begin() : paths.end(), path);
  }
  return paths;
}

FileMark MarkOf(const std::string& path) {
  struct stat about {};
  if (stat(path.c_str(), &about) != 0) Fail("read", path, errno);
  if (!S_ISREG(about.st_mode)) throw FileFault(path + " is no regular file");
  return MarkFrom(about);
}

std::string ReadFile(const std::string& path, std::size_t most) {
  // Whatever has taken the place of a file that was looked at, nothing waits for it.
  const Descriptor descriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  struct stat about {};
  if (descriptor.Get() < 0 || fstat(descriptor.Get(), &about) != 0) Fail("read", path, errno);
  if (!S_ISREG(about.st_mode)) throw FileFault(path + " is no regular file");
  const auto size = static_cast<std::uint64_t>(about.st_size);
  if (size > most) RefuseLong(path, most);
  std::string bytes;
  bytes.reserve(size);
  std::array<char, 65536> chunk;
  while (true) {
    const ssize_t count = read(descriptor.Get(), chunk.data(), chunk.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) Fail("read", path, errno);
    if (count == 0) return bytes;
    bytes.append(chunk.data(), static_cast<std::size_t>(count));
    if (bytes.size() > most) RefuseLong(path, most);
  }
}

ModelFile StoreFile(const std::string& folder, const std::string& id, const std::string& bytes) {
  const std::string path = folder + "/" + id + ".pmml";
  std::string unfinished = folder + "/" + std::string(kUnfinished) + "XXXXXX";
  FileMark mark;
  {
    const Descriptor descriptor(mkostemp(unfinished.data(), O_CLOEXEC));
    if (descriptor.Get() < 0) Fail("write to", folder, errno);
    try {
      WriteAll(descriptor.Get(), bytes, path);
      fchmod(descriptor.Get(), S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH);
      if (rename(unfinished.c_str(), path.c_str()) != 0) Fail("write", path, errno);
    } catch (...) {
      unlink(unfinished.c_str());
      throw;
    }
    struct stat about {};
    if (fstat(descriptor.Get(), &about) == 0) mark = MarkFrom(about);
  }
  Flush(folder);
  return {path, mark, 0};
}

void RemoveFile(const std::string& folder, const std::string& path) {
  if (unlink(path.c_str()) != 0 && errno != ENOENT) Fail("remove", path, errno);
  Flush(folder);
}

void RemoveUnfinished(const std::string& folder) {
  for (const std::string& name : NamesIn(folder)) {
    if (name.starts_with(kUnfinished) && name.size() == kUnfinished.size() + 6) {
      unlink(fmt::format("{}/{}", folder, name).c_str());
    }
  }
}

}  // namespace svmscore::serve
