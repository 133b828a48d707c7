// Tells when something in a folder changes.
#ifndef APP_SERVE_FOLDER_WATCH_H_
#define APP_SERVE_FOLDER_WATCH_H_

#include <string>

namespace svmscore::app {

// Where the system gives no notices, every wait ends by its time. [one thread], but Wake by any.
// Fails: std::bad_alloc.
class FolderWatch {
 public:
  // `folder` may be empty: nothing is watched.
  explicit FolderWatch(const std::string& folder);
  ~FolderWatch();
  FolderWatch(const FolderWatch&) = delete;
  FolderWatch& operator=(const FolderWatch&) = delete;

  // Waits until a file was written to its end, renamed, removed or given other rights, until Wake,
  // or until so many milliseconds are over. True where a file was.
  bool Wait(int milliseconds);
  void Wake() noexcept;

 private:
  int notices_ = -1;
  int wake_ = -1;
};

}  // namespace svmscore::app

#endif  // APP_SERVE_FOLDER_WATCH_H_
