#include "app/table/special_bytes.h"

#include <random>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace svmscore::app {
namespace {

// Texts of all lengths around a block, with every special byte and its neighbours, from every
// place.
TEST(SpecialBytes, AreTheFirstOnesWhereverTheSearchBegins) {
  const std::string_view special("\n\r\",\0", 5);
  const std::string_view others("\x01\t\x0B\x0E !#+-0A\x80\xAC\xFF", 14);
  std::mt19937 random(1);
  for (std::size_t size = 0; size < 200; ++size) {
    std::string text(size, ' ');
    for (char& c : text) c = random() % 9 == 0 ? special[random() % 5] : others[random() % 14];
    SpecialBytes bytes;
    for (std::size_t from = 0; from <= size; from += 1 + random() % 5) {
      const std::size_t first = std::string_view(text).find_first_of(special, from);
      char* const found = bytes.Find(text.data() + from, text.data() + size);
      EXPECT_EQ(static_cast<std::size_t>(found - text.data()), std::min(first, size)) << from;
    }
  }
}

}  // namespace
}  // namespace svmscore::app
