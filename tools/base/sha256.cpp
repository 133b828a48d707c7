#include "tools/base/sha256.h"

#include <array>
#include <cstdint>

#include <nettle/sha2.h>

namespace svmscore::tools {

struct Sha256::Context {
  sha256_ctx sha;
};

Sha256::Sha256() : context_(std::make_unique<Context>()) {
  sha256_init(&context_->sha);
}
Sha256::~Sha256() = default;

void Sha256::Add(const void* bytes, std::size_t count) {
  sha256_update(&context_->sha, count, static_cast<const std::uint8_t*>(bytes));
}

std::string Sha256::Hex() {
  constexpr const char* kDigits = "0123456789abcdef";
  std::array<std::uint8_t, SHA256_DIGEST_SIZE> digest;
  sha256_digest(&context_->sha, digest.size(), digest.data());
  std::string hex;
  for (const unsigned byte : digest) {
    hex += kDigits[byte >> 4U];
    hex += kDigits[byte & 15U];
  }
  return hex;
}

}  // namespace svmscore::tools
