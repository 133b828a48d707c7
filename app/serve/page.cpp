#include "app/serve/page.h"

#include <algorithm>
#include <array>

#include <nettle/base64.h>
#include <nettle/sha2.h>

namespace svmscore::app {
namespace {

const PageFile* FindFile(const std::vector<PageFile>& files, std::string_view name) {
  const auto found = std::find_if(files.begin(), files.end(),
                                  [name](const PageFile& file) { return file.name == name; });
  return found == files.end() ? nullptr : &*found;
}

// As policies write it.
std::string DigestOf(std::string_view text) {
  sha256_ctx sha;
  std::array<std::uint8_t, SHA256_DIGEST_SIZE> digest;
  std::array<char, BASE64_ENCODE_RAW_LENGTH(SHA256_DIGEST_SIZE)> base64;
  sha256_init(&sha);
  sha256_update(&sha, text.size(), reinterpret_cast<const std::uint8_t*>(text.data()));
  sha256_digest(&sha, digest.size(), digest.data());
  base64_encode_raw(base64.data(), digest.size(), digest.data());
  return "'sha256-" + std::string(base64.data(), base64.size()) + "'";
}

// Replaces every `before` NAME `after` by the text of the file between `open` and `close`. Returns
// the digests of the texts.
std::string PutIn(std::string& html, const std::vector<PageFile>& files, std::string_view before,
                  std::string_view after, std::string_view open, std::string_view close) {
  std::string digests;
  std::size_t at = 0;
  while ((at = html.find(before, at)) != std::string::npos) {
    const std::size_t name = at + before.size();
    const std::size_t end = html.find(after, name);
    if (end == std::string::npos) break;
    const PageFile* file = FindFile(files, std::string_view(html).substr(name, end - name));
    if (file == nullptr) {
      at = end;
      continue;
    }
    std::string element(open);
    element += file->text;
    element += close;
    html.replace(at, end + after.size() - at, element);
    at += element.size();
    digests += ' ' + DigestOf(file->text);
  }
  return digests;
}

}  // namespace

Page MakePage(const std::vector<PageFile>& files) {
  const PageFile* index = FindFile(files, "index.html");
  if (index == nullptr) return {};
  Page page;
  page.html = index->text;
  const std::string styles =
      PutIn(page.html, files, "<link rel=\"stylesheet\" href=\"", "\">", "<style>", "</style>");
  const std::string scripts =
      PutIn(page.html, files, "<script src=\"", "\"></script>", "<script>", "</script>");
  page.content_security_policy = "default-src 'none'; style-src" + styles + "; script-src" +
                                 scripts +
                                 "; connect-src 'self'; img-src data:; base-uri 'none'; "
                                 "form-action 'none'; frame-ancestors 'none'";
  return page;
}

}  // namespace svmscore::app
