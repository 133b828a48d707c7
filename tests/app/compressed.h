// Texts as gzip and zstd hold them.
#ifndef TESTS_APP_COMPRESSED_H_
#define TESTS_APP_COMPRESSED_H_

#include <string>

#include <zlib.h>
#include <zstd.h>

namespace svmscore::app {

inline std::string Gzipped(std::string text) {
  z_stream stream{};
  deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, MAX_WBITS + 16, 8, Z_DEFAULT_STRATEGY);
  std::string out(deflateBound(&stream, static_cast<uLong>(text.size())) + 64, '\0');
  stream.next_in = reinterpret_cast<Bytef*>(text.data());
  stream.avail_in = static_cast<uInt>(text.size());
  stream.next_out = reinterpret_cast<Bytef*>(out.data());
  stream.avail_out = static_cast<uInt>(out.size());
  deflate(&stream, Z_FINISH);
  out.resize(stream.total_out);
  deflateEnd(&stream);
  return out;
}

// With a checksum, as the program of that name writes it.
inline std::string Zstandard(const std::string& text) {
  ZSTD_CCtx* context = ZSTD_createCCtx();
  ZSTD_CCtx_setParameter(context, ZSTD_c_checksumFlag, 1);
  std::string out(ZSTD_compressBound(text.size()), '\0');
  out.resize(ZSTD_compress2(context, out.data(), out.size(), text.data(), text.size()));
  ZSTD_freeCCtx(context);
  return out;
}

}  // namespace svmscore::app

#endif  // TESTS_APP_COMPRESSED_H_
