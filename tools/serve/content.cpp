#include "tools/serve/content.h"

#include <array>
#include <memory>

#include <fmt/format.h>

#include "tools/base/decompression.h"
#include "tools/serve/case_requests.h"

namespace svmscore::serve {
namespace {

std::unique_ptr<tools::Decompressor> DecompressorOf(std::string_view bytes) {
  return tools::DecompressorFor(bytes.substr(0, tools::kCompressionMark));
}

std::string ReadAll(tools::Decompressor& decompressor, std::string_view body,
                    std::size_t most) try {
  std::string text;
  std::array<char, 65536> out;
  std::size_t count = 0;
  do {
    count = decompressor.Read(body, out.data(), out.size());
    if (text.size() + count > most) {
      throw BadRequest(413, fmt::format("the body holds more than {} bytes", most));
    }
    text.append(out.data(), count);
  } while (count == out.size());
  if (!decompressor.IsComplete()) {
    throw BadRequest(400, fmt::format("the body ends before its {} stream", decompressor.Format()));
  }
  return text;
} catch (const tools::BrokenCompression& error) {
  throw BadRequest(400, error.what());
}

}  // namespace

std::string Inflated(std::string_view body, std::size_t most) {
  const auto decompressor = DecompressorOf(body);
  if (decompressor == nullptr || std::string_view(decompressor->Format()) != "gzip") {
    throw BadRequest(400, "the body is not compressed by gzip, as its content encoding says");
  }
  return ReadAll(*decompressor, body, most);
}

std::optional<std::string> Unpacked(std::string_view file, std::size_t most) {
  const auto decompressor = DecompressorOf(file);
  if (decompressor == nullptr) return std::nullopt;
  std::string text = ReadAll(*decompressor, file, most);
  if (DecompressorOf(text) != nullptr) throw BadRequest(400, "the body is compressed twice");
  return text;
}

}  // namespace svmscore::serve
