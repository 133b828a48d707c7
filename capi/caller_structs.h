// Reading and writing the structs of the C interface, whose sizes are the caller's.
#ifndef CAPI_CALLER_STRUCTS_H_
#define CAPI_CALLER_STRUCTS_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "capi/call_error.h"

namespace svmscore::capi {

// The first member of a struct of the caller's.
inline std::size_t SizeOf(const void* given) {
  std::size_t size = 0;
  std::memcpy(&size, given, sizeof size);
  return size;
}

// Throws a Refusal unless `size` can be that of a Struct of some version: the first one had `first`
// bytes.
inline void CheckSize(std::size_t size, std::size_t first, const char* name) {
  constexpr std::size_t kAbsurd = 4096;
  if (size >= first && size <= kAbsurd) return;
  RefuseArgument(std::string(name) + ".size is " + std::to_string(size), name,
                 "set it to the size of the struct, as SVMSCORE_INIT does");
}

// Throws a Refusal where the struct has members that this library does not know and that are not 0:
// they ask for something.
inline void CheckRest(const void* given, std::size_t size, std::size_t known, const char* name) {
  const char* bytes = static_cast<const char*>(given);
  for (std::size_t i = known; i < size; ++i) {
    if (bytes[i] != 0) {
      RefuseArgument(std::string(name) + " has members of a later version of the library", name,
                     "set them to 0, or use that version");
    }
  }
}

// The caller's struct as this library knows it; all zeros where `given` is null. `first` is the
// size that the struct had in its first version, where it has grown.
template <typename Struct>
Struct Read(const Struct* given, const char* name, std::size_t first = sizeof(Struct)) {
  Struct known{};
  if (given == nullptr) return known;
  const std::size_t size = SizeOf(given);
  CheckSize(size, first, name);
  CheckRest(given, size, sizeof(Struct), name);
  std::memcpy(&known, given, std::min(size, sizeof(Struct)));
  return known;
}

// Writes as much of `value` as the caller's struct holds, and leaves its size alone.
template <typename Struct>
void Write(Struct value, Struct* to, const char* name) {
  Require(to, name);
  const std::size_t size = SizeOf(to);
  CheckSize(size, sizeof(Struct), name);
  value.size = size;
  std::memcpy(to, &value, std::min(size, sizeof(Struct)));
}

// A text of the caller's. Null is empty.
inline std::string_view ViewOf(const char* data, std::size_t length) {
  if (data == nullptr) return {};
  return length == SVMSCORE_NUL_ENDED ? std::string_view(data) : std::string_view(data, length);
}

inline std::string_view ViewOf(const svmscore_text& text) {
  return ViewOf(text.data, text.length);
}

// The bytes of a document in the caller's memory. Throws a Refusal where they are null, or of no
// size that memory can have: SVMSCORE_UNKNOWN_SIZE and SVMSCORE_NUL_ENDED are none.
inline std::string_view ReadData(const void* data, std::size_t size) {
  Require(data, "data");
  if (size > PTRDIFF_MAX) {
    RefuseArgument("data_size is " + std::to_string(size), "data_size",
                   "give the number of bytes; of a text, without a NUL at its end");
  }
  return {static_cast<const char*>(data), size};
}

}  // namespace svmscore::capi

#endif  // CAPI_CALLER_STRUCTS_H_
