// Texts that the caller of the C interface is given.
#ifndef CAPI_GIVEN_TEXT_H_
#define CAPI_GIVEN_TEXT_H_

#include <cstddef>
#include <cstring>
#include <string>

namespace svmscore::capi {

// Hands a text to the caller, who frees it by svmscore_text_free. `length` may be null. Fails:
// std::bad_alloc.
inline void Give(const std::string& text, char** to, std::size_t* length) {
  char* copy = new char[text.size() + 1];
  std::memcpy(copy, text.c_str(), text.size() + 1);
  *to = copy;
  if (length != nullptr) *length = text.size();
}

}  // namespace svmscore::capi

#endif  // CAPI_GIVEN_TEXT_H_
