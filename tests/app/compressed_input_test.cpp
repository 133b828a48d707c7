// Files that are compressed: read in any pieces, and never taken for whole where they are not.
#include <algorithm>
#include <random>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/base/failure.h"
#include "app/files/input_file.h"
#include "tests/app/compressed.h"
#include "tests/app/run_program.h"
#include "tests/app/temporary_folder.h"

namespace svmscore::app {
namespace {

using testing::HasSubstr;

std::string ReadAll(const std::string& path, std::size_t piece) {
  InputFile file(path);
  std::string text;
  std::string buffer(piece, '\0');
  for (;;) {
    const std::size_t count = file.Read(buffer.data(), piece);
    if (count == 0) return text;
    text.append(buffer, 0, count);
  }
}

// The text, or else the message.
std::string Try(const std::string& path) {
  try {
    return ReadAll(path, 1000);
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.Status(), kInputError);
    return failure.what();
  }
}

std::string Lines(int count) {
  std::mt19937 random(3);
  std::string text;
  for (int i = 0; i < count; ++i) text += std::to_string(random() % 1000) + ",some text\n";
  return text;
}

TEST(CompressedInput, IsReadInAnyPieces) {
  const TemporaryFolder folder;
  const std::string text = Lines(30000);
  const std::string half = text.substr(0, text.size() / 2);
  const std::string rest = text.substr(half.size());
  for (const std::string& file :
       {text, Gzipped(text), Zstandard(text), Gzipped(half) + Gzipped("") + Gzipped(rest),
        Zstandard(half) + Zstandard("") + Zstandard(rest), Gzipped(text) + std::string(1000, '\0'),
        std::string("\x53\x2A\x4D\x18\x03\0\0\0abc", 11) + Zstandard(text)}) {
    const std::string path = folder.Write("file", file);
    for (const std::size_t piece : {1U, 7U, 4096U, 1000000U}) {
      EXPECT_TRUE(ReadAll(path, piece) == text) << piece;
    }
  }
  // Beginnings of marks that go on otherwise.
  for (const std::string plain : {"\x1F", "\x1Fx", "(", "\x28\xB5", "P", "Price,x\n", ""}) {
    EXPECT_EQ(ReadAll(folder.Write("file", plain), 1), plain);
  }
}

TEST(CompressedInput, IsRefusedWhereItIsIncompleteOrCorrupt) {
  const TemporaryFolder folder;
  const std::string text = Lines(40);
  for (const auto& [file, format] : {std::pair{Gzipped(text), "gzip"}, {Zstandard(text), "zstd"}}) {
    for (std::size_t size = tools::kCompressionMark; size < file.size(); ++size) {
      EXPECT_THAT(Try(folder.Write("file", file.substr(0, size))),
                  HasSubstr(std::string("compressed by ") + format + " and ends before"));
    }
    for (std::size_t at = tools::kCompressionMark; at < file.size(); ++at) {
      std::string changed = file;
      changed[at] = static_cast<char>(changed[at] ^ 0x40);
      const std::string read = Try(folder.Write("file", changed));
      EXPECT_TRUE(read == text || read.find(format) != read.npos) << at << read;
    }
    EXPECT_THAT(Try(folder.Write("file", file + "more")), HasSubstr(format));
  }
  const Ran cut = RunProgram({"score", folder.Write("model", Gzipped(text).substr(0, 60))});
  EXPECT_THAT(cut.err, HasSubstr("it ends before its gzip stream does. The file is damaged or "));
  EXPECT_THAT(Try(folder.Write("file", Gzipped("x") + std::string(9, '\0') + "x")),
              HasSubstr("something else follows the end of its gzip stream"));
}

}  // namespace
}  // namespace svmscore::app
