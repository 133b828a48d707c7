// Any layout of columns through the C interface: sizes, offsets, strides, codes and types as they
// come. Whatever is refused is refused by its name; whatever is scored stays within the memory that
// it was given, and gets the same results again.
#include <array>
#include <cstdint>
#include <cstring>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "capi/svmscore.h"
#include "fuzz/choices.h"
#include "fuzz/promise.h"
#include "fuzz/time_limit.h"

namespace svmscore::fuzz {
namespace {

// Memory of exactly its size, so that a sanitizer sees every byte that is read beside it.
class Blocks {
 public:
  const void* Take(std::size_t size, Choices& choices) {
    auto& bytes = kept_.emplace_back(new std::uint8_t[size]);
    for (std::size_t i = 0; i < size; ++i) {
      // Small numbers make useful offsets and codes.
      bytes[i] = i % 4 == 0         ? static_cast<std::uint8_t>(choices.Byte() % 16)
                 : choices.Rarely() ? choices.Byte()
                                    : 0;
    }
    return bytes.get();
  }
  const void* Copy(const void* data, std::size_t size) {
    auto& bytes = kept_.emplace_back(new std::uint8_t[size]);
    if (size > 0) std::memcpy(bytes.get(), data, size);
    return bytes.get();
  }

 private:
  std::deque<std::unique_ptr<std::uint8_t[]>> kept_;
};

std::size_t OddSize(Choices& choices, std::size_t usual) {
  if (!choices.Rarely()) return usual;
  constexpr std::array<std::size_t, 8> kOdd = {
      0, 1, 7, 64, SIZE_MAX / 2, SIZE_MAX - 1, SIZE_MAX / 8, std::size_t{1} << 40};
  return choices.Half() ? kOdd[choices.Below(kOdd.size())] : usual + choices.Below(5);
}

class Table {
 public:
  explicit Table(Choices& choices) : choices_(choices), rows_(choices.Below(70)) {
    for (const char* name : {"a", "size", "colour", "day", "kind", "more"}) {
      if (choices_.Rarely()) continue;
      svmscore_column column = Column(rows_, true);
      column.name = name;
      column.name_length = SVMSCORE_NUL_ENDED;
      columns_.push_back(column);
    }
  }

  int Score(svmscore_scorer* scorer, svmscore_table& table, svmscore_error** error) const {
    return svmscore_score(scorer, columns_.data(), columns_.size(), rows_, &table, error);
  }

 private:
  svmscore_column Column(std::size_t length, bool may_be_dictionary) {
    svmscore_column column = SVMSCORE_INIT(svmscore_column);
    constexpr std::array kUsual = {SVMSCORE_UTF8, SVMSCORE_UTF8_64, SVMSCORE_NULL};
    column.type = choices_.Half() ? kUsual[choices_.Below(kUsual.size())]
                                  : static_cast<std::int32_t>(choices_.Below(17));
    column.code_type = static_cast<std::int32_t>(choices_.Below(17));
    column.length = OddSize(choices_, length);
    column.offset = choices_.Half() ? OddSize(choices_, choices_.Below(4)) : 0;
    column.stride = choices_.Rarely() ? OddSize(choices_, choices_.Below(24)) : 0;
    const bool texts = column.type == SVMSCORE_UTF8 || column.type == SVMSCORE_UTF8_64;
    const std::size_t stride = column.stride == 0 || column.stride > 64 ? 8 : column.stride;
    column.data_size = choices_.Rarely() ? choices_.Below(600) : (length + 6) * stride + 8;
    column.data = choices_.Rarely() ? nullptr : blocks_.Take(column.data_size, choices_);
    if (texts && !choices_.Rarely()) FillTexts(column, length + 8);
    if (choices_.Half()) {
      column.validity_size = OddSize(choices_, (length + 12) / 8);
      if (column.validity_size > 100) column.validity_size = 3;
      column.validity =
          static_cast<const std::uint8_t*>(blocks_.Take(column.validity_size, choices_));
    }
    if (may_be_dictionary && (column.type == SVMSCORE_DICTIONARY || choices_.Rarely())) {
      dictionaries_.push_back(Column(choices_.Below(9), false));
      if (!choices_.Rarely()) column.dictionary = &dictionaries_.back();
    }
    // A stated size that is too small or absurd can be told; one a little too large cannot.
    if (choices_.Rarely()) {
      column.size = choices_.Half() ? SIZE_MAX - choices_.Below(9) : choices_.Below(column.size);
    }
    return column;
  }

  void FillTexts(svmscore_column& column, std::size_t count) {
    std::string text;
    std::vector<std::int64_t> wide = {0};
    while (wide.size() <= count) {
      text += choices_.Half() ? Word(choices_) : NumberText(choices_);
      wide.push_back(static_cast<std::int64_t>(text.size()));
    }
    if (choices_.Rarely())
      wide[choices_.Below(wide.size())] = static_cast<std::int64_t>(choices_.Byte()) - 9;
    const std::vector<std::int32_t> narrow(wide.begin(), wide.end());
    column.data = blocks_.Copy(text.data(), text.size());
    column.data_size = text.size();
    const bool is_wide = column.type == SVMSCORE_UTF8_64;
    column.offsets_size = wide.size() * (is_wide ? 8 : 4);
    column.offsets = is_wide ? blocks_.Copy(wide.data(), column.offsets_size)
                             : blocks_.Copy(narrow.data(), column.offsets_size);
  }

  Choices& choices_;
  std::size_t rows_;
  std::deque<svmscore_column> dictionaries_;
  std::vector<svmscore_column> columns_;
  Blocks blocks_;
};

svmscore_model* TheModel() {
  static svmscore_model* const model = [] {
    svmscore_model* loaded = nullptr;
    svmscore_error* error = nullptr;
    Promise(svmscore_load_file(FUZZ_FOLDER "/table.pmml", SVMSCORE_NUL_ENDED, nullptr, &loaded,
                               &error) == SVMSCORE_OK,
            svmscore_error_message(error).data);
    return loaded;
  }();
  return model;
}

// All that the table points at, so that a sanitizer sees whether it is there.
std::uint64_t Digest(const svmscore_table& table) {
  std::uint64_t digest = 0;
  const auto add = [&digest](const void* bytes, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) {
      digest = digest * 31 + static_cast<const unsigned char*>(bytes)[i];
    }
  };
  for (std::size_t i = 0; i < table.column_count; ++i) {
    const svmscore_column& column = table.columns[i];
    add(column.data, column.data_size);
    add(column.offsets, column.offsets_size);
    add(column.validity, (column.length + 7) / 8 * (column.validity == nullptr ? 0 : 1));
  }
  return digest;
}

}  // namespace
}  // namespace svmscore::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace svmscore::fuzz;
  const TimeLimit limit;
  Choices choices(data, size);
  svmscore_scorer_options options = SVMSCORE_INIT(svmscore_scorer_options);
  options.columns = static_cast<std::int32_t>(choices.Below(3));
  options.decisions = choices.Half() ? 1 : 0;
  options.category_codes = choices.Half() ? 1 : 0;
  svmscore_scorer* scorer = nullptr;
  Promise(svmscore_scorer_new(TheModel(), &options, &scorer, nullptr) == SVMSCORE_OK, "a scorer");
  const Table cases(choices);
  svmscore_table table = SVMSCORE_INIT(svmscore_table);
  svmscore_error* error = nullptr;
  const int kind = cases.Score(scorer, table, &error);
  if (kind == SVMSCORE_OK) {
    const std::uint64_t digest = Digest(table);
    Promise(table.scored + table.missing + table.invalid == table.row_count, "rows are counted");
    Promise(cases.Score(scorer, table, nullptr) == SVMSCORE_OK && Digest(table) == digest,
            "a table scores alike again");
  } else {
    Promise(kind == SVMSCORE_TABLE || kind == SVMSCORE_ARGUMENT, "a table is refused as such");
    Promise(svmscore_error_sentence(error).length > 0, "a refusal has a sentence");
  }
  svmscore_error_free(error);
  svmscore_scorer_free(scorer);
  return 0;
}
