#include "app/pipeline/row_format.h"

#include <array>
#include <charconv>
#include <cmath>
#include <utility>

#include "host/text/number_text.h"
#include "tools/base/json_string.h"

namespace svmscore::app {
namespace {

using tools::AppendJsonString;

void AppendNumber(std::string& out, double number) {
  std::array<char, kNumberTextSize> buffer;
  out.append(buffer.data(), FormatNumber(buffer.data(), number));
}

void AppendWhole(std::string& out, long number) {
  std::array<char, 24> buffer;
  const auto written = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number);
  out.append(buffer.data(), written.ptr);
}

class Csv : public RowFormat {
 public:
  Csv(std::vector<std::string> names, char delimiter)
      : names_(std::move(names)), delimiter_(delimiter), special_{delimiter, '"', '\r', '\n'} {}

  void Header(std::string& out) const override {
    for (std::size_t i = 0; i < names_.size(); ++i) {
      Begin(out, i);
      Text(out, names_[i]);
    }
    EndRow(out);
  }
  void Begin(std::string& out, std::size_t column) const override {
    if (column > 0) out += delimiter_;
  }
  void Empty(std::string&) const override {}
  void Text(std::string& out, std::string_view text) const override {
    if (text.find_first_of({special_.data(), special_.size()}) == std::string_view::npos) {
      out += text;
      return;
    }
    out += '"';
    for (const char c : text) {
      if (c == '"') out += '"';
      out += c;
    }
    out += '"';
  }
  void Number(std::string& out, double number) const override { AppendNumber(out, number); }
  void Whole(std::string& out, long number) const override { AppendWhole(out, number); }
  void EndRow(std::string& out) const override { out += '\n'; }

 private:
  std::vector<std::string> names_;
  char delimiter_;
  std::array<char, 4> special_;  // what is written in quotation marks
};

class JsonLines : public RowFormat {
 public:
  explicit JsonLines(const std::vector<std::string>& names) {
    for (const std::string& name : names) {
      std::string key = keys_.empty() ? "{" : ",";
      AppendJsonString(key, name);
      keys_.push_back(key + ':');
    }
  }

  void Header(std::string&) const override {}
  void Begin(std::string& out, std::size_t column) const override { out += keys_[column]; }
  void Empty(std::string& out) const override { out += "null"; }
  void Text(std::string& out, std::string_view text) const override { AppendJsonString(out, text); }
  void Number(std::string& out, double number) const override {
    if (std::isfinite(number)) {
      AppendNumber(out, number);
    } else {
      Empty(out);
    }
  }
  void Whole(std::string& out, long number) const override { AppendWhole(out, number); }
  void EndRow(std::string& out) const override { out += "}\n"; }

 private:
  std::vector<std::string> keys_;  // of every column: what stands before its value
};

}  // namespace

std::unique_ptr<RowFormat> CsvFormat(std::vector<std::string> names, char delimiter) {
  return std::make_unique<Csv>(std::move(names), delimiter);
}

std::unique_ptr<RowFormat> JsonLinesFormat(const std::vector<std::string>& names) {
  return std::make_unique<JsonLines>(names);
}

}  // namespace svmscore::app
