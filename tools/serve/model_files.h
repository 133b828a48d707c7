// Files of models: in a folder, by their ids, and stored so that nothing acknowledged is lost.
// [any thread], one at a time for each folder. Fails: as stated; std::bad_alloc.
#ifndef TOOLS_SERVE_MODEL_FILES_H_
#define TOOLS_SERVE_MODEL_FILES_H_

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace svmscore::serve {

// A file or folder that cannot be read or written; says which and why.
class FileFault : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// What changes with the content of a file, and with who may read it.
struct FileMark {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::uint64_t size = 0;
  std::int64_t modified = 0;  // in nanoseconds since 1970
  std::int64_t changed = 0;   // the same of the file's rights and names, too

  friend bool operator==(const FileMark&, const FileMark&) = default;
};

struct ModelFile {
  std::string path;
  FileMark mark;
  std::size_t others = 0;  // files of the same id that are not taken
};

// NAME.pmml and NAME.xml, perhaps with .gz or .zst, are the model NAME; others are none, and so are
// names that are no ids. Empty for these.
std::string IdOfFile(const std::string& name);

// The files of a folder, by their ids. Of several files of an id the first by name is taken, but
// ID.pmml before all. `nameless` gets the paths of documents whose names are no ids, but for hidden
// ones, which may be unfinished. Fails: FileFault where the folder cannot be read.
std::map<std::string, ModelFile> FilesIn(const std::string& folder,
                                         std::set<std::string>* nameless = nullptr);
// The paths of all files of the id, the one that FilesIn takes first. Fails: FileFault where the
// folder cannot be read.
std::vector<std::string> FilesOf(const std::string& folder, const std::string& id);
// Fails: FileFault where there is no such file, or it is no regular one.
FileMark MarkOf(const std::string& path);
// Fails: FileFault where the file cannot be read or has more than `most` bytes.
std::string ReadFile(const std::string& path, std::size_t most);

// Makes the bytes the file ID.pmml: when it returns, they are on the disk, and before that the
// earlier file is there. Fails: FileFault; then the earlier file is there.
ModelFile StoreFile(const std::string& folder, const std::string& id, const std::string& bytes);
// Removes the file for good. Fails: FileFault.
void RemoveFile(const std::string& folder, const std::string& path);
// Removes what StoreFile left behind where its process was killed.
void RemoveUnfinished(const std::string& folder);

}  // namespace svmscore::serve

#endif  // TOOLS_SERVE_MODEL_FILES_H_
