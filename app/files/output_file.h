// Where results go: standard output, a device or pipe, or a file that appears when it is complete.
#ifndef APP_FILES_OUTPUT_FILE_H_
#define APP_FILES_OUTPUT_FILE_H_

#include <string>
#include <string_view>

namespace svmscore::app {

// Failures are thrown as Failure(kOutputError) that names the file; for a pipe that is closed at
// the other end the message is empty.
//
// A regular file is written under another name in the same folder and takes its own name in
// Commit; until then an earlier file of that name stays as it was. When this object goes without
// Commit, or an ending signal ends the process, the unfinished file is removed. One such object at
// a time.
//
// A path that means a descriptor of this process, as /dev/stdout and /dev/fd/3 do, and the file
// that standard output or standard error is at anyway, are written where the descriptor stands.
class OutputFile {
 public:
  // "-" is standard output.
  explicit OutputFile(const std::string& path);
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  void Write(std::string_view bytes);
  // Makes sure that everything is written, and gives the file its name.
  void Commit();

 private:
  void OpenTemporary();
  [[noreturn]] void Fail(int error) const;
  void CloseAndRemove() noexcept;

  std::string name_;       // how messages call the output
  std::string target_;     // the final name; empty where the output is written in place
  std::string temporary_;  // the unfinished file; empty where there is none
  int descriptor_ = -1;
};

// False where an output of this name becomes a file of its own that appears when it is complete.
bool IsWrittenInPlace(const std::string& path);

}  // namespace svmscore::app

#endif  // APP_FILES_OUTPUT_FILE_H_
