#include "tools/serve/content.h"

#include <array>
#include <memory>

#include <fmt/format.h>

#include "tools/base/decompression.h"
#include "tools/serve/case_requests.h"

namespace svmscore::serve {

std::string Inflated(std::string_view body, std::size_t most) try {
  const auto decompressor = tools::DecompressorFor(body.substr(0, tools::kCompressionMark));
  if (decompressor == nullptr || std::string_view(decompressor->Format()) != "gzip") {
    throw BadRequest(400, "the body is not compressed by gzip, as its content encoding says");
  }
  std::string text;
  std::array<char, 65536> out;
  std::size_t count = 0;
  do {
    count = decompressor->Read(body, out.data(), out.size());
    if (text.size() + count > most) {
      throw BadRequest(413, fmt::format("the body holds more than {} bytes", most));
    }
    text.append(out.data(), count);
  } while (count == out.size());
  if (!decompressor->IsComplete()) throw BadRequest(400, "the body ends before its gzip stream");
  return text;
} catch (const tools::BrokenCompression& error) {
  throw BadRequest(400, error.what());
}

}  // namespace svmscore::serve
