// What the name of a file leads to.
#ifndef APP_FILES_NAMED_FILE_H_
#define APP_FILES_NAMED_FILE_H_

#include <filesystem>
#include <string>

namespace svmscore::app {

// The name behind a chain of symbolic links, whether there is a file of that name or not. Ends at a
// descriptor: its link leads to a name, which is less than what the descriptor is.
std::filesystem::path FollowLinks(const std::string& path);

// True for a name in one of the folders in which the system lists the descriptors of a process.
bool IsDescriptor(const std::filesystem::path& path);

// What "-" means in the place of a name.
enum class Stream { kInput, kOutput, kNeither };
struct NamedFile {
  const std::string& path;
  Stream stream;
};
// True where both lead to one regular file, which need not exist yet.
bool IsSameFile(const NamedFile& one, const NamedFile& other);

}  // namespace svmscore::app

#endif  // APP_FILES_NAMED_FILE_H_
