// Bodies that come compressed.
#ifndef TOOLS_SERVE_CONTENT_H_
#define TOOLS_SERVE_CONTENT_H_

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace svmscore::serve {

// What a body holds that was sent with the content encoding gzip. [any thread] Fails: BadRequest
// for one that is no gzip, and for one that holds more than `most` bytes; std::bad_alloc.
std::string Inflated(std::string_view body, std::size_t most);

// The same of a file that is compressed by gzip or zstd; nothing for one that is not. What it holds
// must not be compressed once more: a few bytes could hold any number.
std::optional<std::string> Unpacked(std::string_view file, std::size_t most);

}  // namespace svmscore::serve

#endif  // TOOLS_SERVE_CONTENT_H_
