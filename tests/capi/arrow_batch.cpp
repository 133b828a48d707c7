#include "tests/capi/arrow_batch.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <map>
#include <memory>

#include "host/text/number_text.h"

namespace svmscore_test {
namespace {

template <typename Struct>
void CountRelease(Struct* released) {
  ++*static_cast<int*>(released->private_data);
  released->release = nullptr;
}

// Whether the format can hold the cell exactly.
bool Holds(const std::string& format, const std::string& cell) {
  if (cell.empty() || format == "n") return cell.empty();
  const auto number = svmscore::ParseNumber(cell);
  if (!number || format == "u" || format == "U" || format == "vu") return false;
  if (format == "g") return true;
  if (format == "f") return static_cast<double>(static_cast<float>(*number)) == *number;
  const bool whole = *number == std::trunc(*number) && !std::signbit(*number);
  return whole && *number < 100.0;  // of every whole type, and of half floats' first 2048
}

template <typename T>
void Put(void* data, std::size_t at, double number) {
  static_cast<T*>(data)[at] = static_cast<T>(number);
}

void PutHalf(void* data, std::size_t at, double number) {
  std::uint16_t bits = 0;
  if (number != 0.0) {
    int exponent = 0;
    const double fraction = std::frexp(number, &exponent);
    bits = static_cast<std::uint16_t>((exponent + 14) << 10 |
                                      static_cast<int>(std::ldexp(fraction, 11) - 1024));
  }
  static_cast<std::uint16_t*>(data)[at] = bits;
}

using PutNumber = void (*)(void*, std::size_t, double);
const std::map<std::string, PutNumber> kNumberFormats = {
    {"c", Put<std::int8_t>},   {"C", Put<std::uint8_t>},  {"s", Put<std::int16_t>},
    {"S", Put<std::uint16_t>}, {"i", Put<std::int32_t>},  {"I", Put<std::uint32_t>},
    {"l", Put<std::int64_t>},  {"L", Put<std::uint64_t>}, {"e", PutHalf},
    {"f", Put<float>},         {"g", Put<double>},
};

}  // namespace

ArrowSchema ArrowBatch::NewSchema(const char* format, const char* name) {
  ArrowSchema made{};
  made.format = format;
  made.name = name;
  made.release = CountRelease<ArrowSchema>;
  made.private_data = &released;
  return made;
}

ArrowArray ArrowBatch::NewArray(std::int64_t length, std::int64_t offset,
                                std::vector<const void*> buffers) {
  ArrowArray made{};
  made.length = length;
  made.offset = offset;
  made.null_count = -1;
  buffers_.push_back(std::move(buffers));
  made.n_buffers = static_cast<std::int64_t>(buffers_.back().size());
  made.buffers = buffers_.back().data();
  made.release = CountRelease<ArrowArray>;
  made.private_data = &released;
  return made;
}

std::vector<const void*> ArrowBatch::TextBuffers(const std::vector<std::string>& cells,
                                                 const std::string& format) {
  std::string all;
  auto* narrow = Keep<std::int32_t>(cells.size() + 1);
  auto* wide = Keep<std::int64_t>(cells.size() + 1);
  auto* views = Keep<std::int32_t>(4 * cells.size());
  for (std::size_t i = 0; i < cells.size(); ++i) {
    views[4 * i] = static_cast<std::int32_t>(cells[i].size());
    if (cells[i].size() <= 12) {
      std::memcpy(views + 4 * i + 1, cells[i].data(), cells[i].size());
    } else {
      std::memcpy(views + 4 * i + 1, cells[i].data(), 4);
      views[4 * i + 2] = 1;
      views[4 * i + 3] = static_cast<std::int32_t>(all.size());
    }
    all += cells[i];
    narrow[i + 1] = static_cast<std::int32_t>(all.size());
    wide[i + 1] = static_cast<std::int64_t>(all.size());
  }
  char* text = Keep<char>(all.size());
  std::memcpy(text, all.data(), all.size());
  if (format == "vu") {
    auto* sizes = Keep<std::int64_t>(2);
    sizes[1] = static_cast<std::int64_t>(all.size());
    return {views, text, text, sizes};
  }
  return {format == "U" ? static_cast<void*>(wide) : narrow, text};
}

void ArrowBatch::AddColumn(const std::string& name, const std::vector<std::string>& cells,
                           const Layout& layout) {
  std::string format = layout.format;
  const bool fits = std::all_of(cells.begin(), cells.end(), [&format](const std::string& cell) {
    return Holds(format, cell) || (cell.empty() && format != "dictionary");
  });
  const bool number = kNumberFormats.contains(format);
  if ((number || format == "n") && !fits) format = "u";
  const std::string& kept_name = names_.emplace_back(name);
  auto* validity = Keep<std::uint8_t>(cells.size() / 8 + 1);
  for (std::size_t i = 0; i < cells.size(); ++i) {
    if (!cells[i].empty()) {
      validity[i / 8] = static_cast<std::uint8_t>(validity[i / 8] | 1U << (i % 8));
    }
  }
  std::vector<const void*> buffers = {validity};
  std::vector<std::string> texts;
  if (format == "n") {
    buffers.clear();
  } else if (format == "dictionary") {
    std::map<std::string, std::int8_t> codes;
    auto* data = Keep<std::int8_t>(cells.size());
    for (std::size_t i = 0; i < cells.size(); ++i) {
      const auto [code, is_new] = codes.emplace(cells[i], static_cast<std::int8_t>(texts.size()));
      if (is_new) texts.push_back(cells[i]);
      data[i] = code->second;
    }
    buffers.push_back(data);
    format = "c";
  } else if (kNumberFormats.contains(format)) {
    auto* data = Keep<std::uint64_t>(cells.size());
    for (std::size_t i = 0; i < cells.size(); ++i) {
      const double value = cells[i].empty() ? 0.0 : *svmscore::ParseNumber(cells[i]);
      kNumberFormats.at(format)(data, i, value);
    }
    buffers.push_back(data);
  } else {
    for (const void* buffer : TextBuffers(cells, format)) buffers.push_back(buffer);
  }
  schemas.push_back(NewSchema(names_.emplace_back(format).c_str(), kept_name.c_str()));
  arrays.push_back(NewArray(static_cast<std::int64_t>(cells.size()) - layout.before, layout.before,
                            std::move(buffers)));
  schema_pointers_.push_back(&schemas.back());
  array_pointers_.push_back(&arrays.back());
  if (texts.empty()) return;
  std::vector<const void*> text_buffers = {nullptr};
  for (const void* buffer : TextBuffers(texts, "u")) text_buffers.push_back(buffer);
  schemas.push_back(NewSchema("u", ""));
  arrays.push_back(NewArray(static_cast<std::int64_t>(texts.size()), 0, std::move(text_buffers)));
  schema_pointers_.back()->dictionary = &schemas.back();
  array_pointers_.back()->dictionary = &arrays.back();
}

ArrowBatch::ArrowBatch(const Rows& rows, const Layout& layout, std::int64_t skipped) {
  for (std::size_t c = 0; c < rows[0].size(); ++c) {
    const auto before = static_cast<std::size_t>(layout.before + skipped);
    std::vector<std::string> cells(before, rows[1][c]);
    for (std::size_t r = 1; r < rows.size(); ++r) cells.push_back(rows[r][c]);
    AddColumn(rows[0][c], cells, layout);
  }
  schema = NewSchema("+s", "");
  schema.children = schema_pointers_.data();
  schema.n_children = static_cast<std::int64_t>(schema_pointers_.size());
  array = NewArray(static_cast<std::int64_t>(rows.size()) - 1, skipped, {nullptr});
  array.children = array_pointers_.data();
  array.n_children = schema.n_children;
}

std::size_t ArrowBatch::Find(const std::string& name) const {
  for (std::size_t i = 0; i < schema_pointers_.size(); ++i) {
    if (schema_pointers_[i]->name == name) return i;
  }
  ADD_FAILURE() << "no column " << name;
  return 0;
}

Rows RowsOf(const ArrowSchema& schema, const ArrowArray& array) {
  const auto rows = static_cast<std::size_t>(array.length);
  std::vector<svmscore_column> columns;
  std::deque<svmscore_column> dictionaries;
  const auto texts = [](const ArrowArray& of, svmscore_column& column) {
    column.type = SVMSCORE_UTF8_64;
    column.offsets = of.buffers[1];
    column.data = of.buffers[2];
  };
  for (std::int64_t c = 0; c < array.n_children; ++c) {
    const ArrowArray& child = *array.children[c];
    const std::string format = schema.children[c]->format;
    EXPECT_EQ(child.length, array.length);
    EXPECT_EQ(child.null_count == 0, child.buffers[0] == nullptr);
    svmscore_column column = SVMSCORE_INIT(svmscore_column);
    column.name = schema.children[c]->name;
    column.name_length = std::strlen(column.name);
    column.validity = static_cast<const std::uint8_t*>(child.buffers[0]);
    column.data = child.buffers[1];
    column.type = format == "g" ? SVMSCORE_F64 : SVMSCORE_I64;
    if (format == "U") texts(child, column);
    if (format == "i") {
      column.type = SVMSCORE_DICTIONARY;
      EXPECT_STREQ(schema.children[c]->dictionary->format, "U");
      texts(*child.dictionary, dictionaries.emplace_back());
      column.dictionary = &dictionaries.back();
    }
    columns.push_back(column);
  }
  svmscore_table table = SVMSCORE_INIT(svmscore_table);
  table.row_count = rows;
  table.column_count = columns.size();
  table.columns = columns.data();
  return RowsOf(table);
}

namespace {

struct Source {
  std::vector<ArrowBatch*> batches;
  bool fails;
  int* released;
  std::size_t next = 0;
};

}  // namespace

ArrowArrayStream StreamOf(std::vector<ArrowBatch*> batches, bool fails, int* released) {
  ArrowArrayStream stream{};
  stream.private_data = new Source{std::move(batches), fails, released};
  stream.get_schema = [](ArrowArrayStream* self, ArrowSchema* out) {
    *out = static_cast<Source*>(self->private_data)->batches[0]->schema;
    return 0;
  };
  stream.get_next = [](ArrowArrayStream* self, ArrowArray* out) {
    auto& source = *static_cast<Source*>(self->private_data);
    if (source.next < source.batches.size()) {
      *out = source.batches[source.next++]->array;
      return 0;
    }
    *out = {};
    return source.fails ? EIO : 0;
  };
  stream.get_last_error = [](ArrowArrayStream*) { return "the source is broken"; };
  stream.release = [](ArrowArrayStream* self) {
    const std::unique_ptr<Source> source(static_cast<Source*>(self->private_data));
    ++*source->released;
    self->release = nullptr;
  };
  return stream;
}

}  // namespace svmscore_test
