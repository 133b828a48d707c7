// The page for people: one document, made of the files of app/serve/page/.
#ifndef APP_SERVE_PAGE_H_
#define APP_SERVE_PAGE_H_

#include <string>
#include <string_view>
#include <vector>

namespace svmscore::app {

struct PageFile {
  std::string_view name;
  std::string_view text;
};
// The files as they are compiled into the program. Lives: as long as the process.
const std::vector<PageFile>& PageFiles();

// A document, and what browsers let it do.
struct Page {
  std::string html;
  std::string content_security_policy;
};

// Puts style sheets and scripts into index.html in place of the elements that name them: <link
// rel="stylesheet" href="NAME"> and <script src="NAME"></script>. The policy allows these, by their
// digests, requests to the service itself, and nothing else. Empty without an index.html. [any
// thread] Fails: std::bad_alloc.
Page MakePage(const std::vector<PageFile>& files);

}  // namespace svmscore::app

#endif  // APP_SERVE_PAGE_H_
