#include "tools/base/decompression.h"

#include <algorithm>
#include <array>
#include <new>
#include <string>

#include <fmt/format.h>
#include <zlib.h>
#include <zstd.h>
#include <zstd_errors.h>

namespace svmscore::tools {
namespace {

constexpr std::string_view kGzipMark = "\x1F\x8B";
constexpr std::string_view kZstdMark = "\x28\xB5\x2F\xFD";
// A frame of zstd that is to be skipped: 0x50 to 0x5F, then this.
constexpr std::string_view kSkippedMark = "\x2A\x4D\x18";

class Gzip : public Decompressor {
 public:
  Gzip() {
    constexpr int kGzipOnly = 16;
    if (inflateInit2(&stream_, MAX_WBITS + kGzipOnly) != Z_OK) throw std::bad_alloc();
  }
  ~Gzip() override { inflateEnd(&stream_); }
  Gzip(const Gzip&) = delete;
  Gzip& operator=(const Gzip&) = delete;

  std::size_t Read(std::string_view& in, char* out, std::size_t size) override {
    stream_.next_out = reinterpret_cast<Bytef*>(out);
    stream_.avail_out = static_cast<uInt>(std::min<std::size_t>(size, kMostAtOnce));
    const uInt wanted = stream_.avail_out;
    while (stream_.avail_out > 0) {
      if (is_complete_ && !BeginNext(in)) break;
      if (!Inflate(in)) break;
    }
    return wanted - stream_.avail_out;
  }
  bool IsComplete() const override { return is_complete_; }
  const char* Format() const override { return "gzip"; }

 private:
  static constexpr std::size_t kMostAtOnce = std::size_t{1} << 30;

  // After the end of a stream: false where nothing more is at hand. Zeros fill up a block of a
  // tape.
  bool BeginNext(std::string_view& in) {
    const std::size_t zeros = std::min(in.find_first_not_of('\0'), in.size());
    is_padded_ = is_padded_ || zeros > 0;
    in.remove_prefix(zeros);
    if (in.empty()) return false;
    if (is_padded_ || in[0] != kGzipMark[0]) {
      throw BrokenCompression("something else follows the end of its gzip stream");
    }
    inflateReset(&stream_);
    is_complete_ = false;
    return true;
  }

  // False where more input is needed.
  bool Inflate(std::string_view& in) {
    const std::size_t given = std::min(in.size(), kMostAtOnce);
    // zlib reads what it is given and changes nothing of it.
    stream_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(in.data()));
    stream_.avail_in = static_cast<uInt>(given);
    const int result = inflate(&stream_, Z_NO_FLUSH);
    in.remove_prefix(given - stream_.avail_in);
    if (result == Z_MEM_ERROR) throw std::bad_alloc();
    if (result != Z_OK && result != Z_STREAM_END && result != Z_BUF_ERROR) {
      throw BrokenCompression(
          fmt::format("its gzip stream is corrupt ({})",
                      stream_.msg == nullptr ? "it needs a dictionary" : stream_.msg));
    }
    is_complete_ = result == Z_STREAM_END;
    return is_complete_ || !in.empty();
  }

  z_stream stream_{};
  bool is_complete_ = false;
  bool is_padded_ = false;
};

class Zstd : public Decompressor {
 public:
  Zstd() : stream_(ZSTD_createDStream()) {
    if (stream_ == nullptr) throw std::bad_alloc();
    ZSTD_DCtx_setParameter(stream_, ZSTD_d_windowLogMax, kMostWindow);
  }
  ~Zstd() override { ZSTD_freeDStream(stream_); }
  Zstd(const Zstd&) = delete;
  Zstd& operator=(const Zstd&) = delete;

  std::size_t Read(std::string_view& in, char* out, std::size_t size) override {
    ZSTD_outBuffer to = {out, size, 0};
    for (;;) {
      ZSTD_inBuffer from = {in.data(), in.size(), 0};
      const std::size_t before = to.pos;
      const std::size_t result = ZSTD_decompressStream(stream_, &to, &from);
      in.remove_prefix(from.pos);
      if (ZSTD_isError(result) != 0) Refuse(result);
      // With nothing to read after its end the library would begin a new frame.
      if (from.pos > 0 || to.pos > before) is_complete_ = result == 0;
      if (to.pos == to.size || in.empty()) return to.pos;
    }
  }
  bool IsComplete() const override { return is_complete_; }
  const char* Format() const override { return "zstd"; }

 private:
  static constexpr int kMostWindow = 27;  // 128 MiB

  [[noreturn]] static void Refuse(std::size_t result) {
    const ZSTD_ErrorCode error = ZSTD_getErrorCode(result);
    if (error == ZSTD_error_memory_allocation) throw std::bad_alloc();
    if (error == ZSTD_error_frameParameter_windowTooLarge) {
      throw BrokenCompression(
          "its zstd stream needs a window of more than 128 MiB; compress it with --long=27 or "
          "less");
    }
    throw BrokenCompression(
        fmt::format("its zstd stream is corrupt ({})", ZSTD_getErrorName(result)));
  }

  ZSTD_DStream* stream_;
  bool is_complete_ = false;
};

bool IsSkippedFrame(std::string_view text) {
  return (static_cast<unsigned char>(text[0]) & 0xF0U) == 0x50U &&
         text.substr(1).starts_with(kSkippedMark.substr(0, text.size() - 1));
}

}  // namespace

std::unique_ptr<Decompressor> DecompressorFor(std::string_view beginning) {
  if (beginning.starts_with(kGzipMark)) return std::make_unique<Gzip>();
  const bool is_zstd = beginning.starts_with(kZstdMark) ||
                       (beginning.size() >= kCompressionMark && IsSkippedFrame(beginning));
  return is_zstd ? std::make_unique<Zstd>() : nullptr;
}

bool MayBecomeCompressed(std::string_view beginning) {
  return beginning.empty() || kGzipMark.starts_with(beginning) ||
         kZstdMark.starts_with(beginning) || IsSkippedFrame(beginning);
}

}  // namespace svmscore::tools
