// Documents in encodings other than UTF-8.
#ifndef TESTS_HOST_ENCODED_TEXT_H_
#define TESTS_HOST_ENCODED_TEXT_H_

#include <string>

#include <iconv.h>

#include <gtest/gtest.h>

namespace svmscore {

// The UTF-8 text in another encoding.
inline std::string Encoded(const std::string& encoding, std::string text) {
  std::string bytes(8 * text.size() + 16, ' ');
  const iconv_t converter = iconv_open(encoding.c_str(), "UTF-8");
  char* from = text.data();
  char* to = bytes.data();
  std::size_t left = text.size();
  std::size_t room = bytes.size();
  EXPECT_NE(iconv(converter, &from, &left, &to, &room), static_cast<std::size_t>(-1)) << encoding;
  EXPECT_NE(iconv(converter, nullptr, nullptr, &to, &room), static_cast<std::size_t>(-1));
  iconv_close(converter);
  bytes.resize(bytes.size() - room);
  return bytes;
}

inline std::string Declaring(const std::string& encoding, const std::string& text) {
  return "<?xml version='1.0' encoding='" + encoding + "'?>" + text;
}

// A document in the encoding that it declares.
inline std::string InEncoding(const std::string& encoding, const std::string& text) {
  return Encoded(encoding, Declaring(encoding, text));
}

}  // namespace svmscore

#endif  // TESTS_HOST_ENCODED_TEXT_H_
