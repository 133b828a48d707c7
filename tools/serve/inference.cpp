#include "tools/serve/inference.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <vector>

#include <fmt/format.h>

#include "host/model/score_dict_var.h"
#include "host/text/number_text.h"
#include "host/text/printable.h"
#include "tools/serve/answer_text.h"

namespace svmscore::serve {
namespace {

using tools::CellKind;

constexpr std::string_view kReason = "reason";
constexpr std::array<std::string_view, 6> kTypes = {"FP64",  "FP32", "INT64",
                                                    "INT32", "BOOL", "BYTES"};

struct Tensor {
  std::string name;
  std::string type;
  std::vector<std::size_t> shape;
  std::vector<CaseCell> data;
  std::optional<std::size_t> bad;  // the first element that is no value
  bool has_shape = false;
  bool has_data = false;
};

// What is asked for.
struct Inference {
  std::string id;  // as JSON; empty where there is none
  std::vector<Tensor> inputs;
  bool has_inputs = false;
  std::vector<std::string> outputs;
};

std::string TextOf(JsonScanner& scanner, const char* what) {
  if (!scanner.NextIs(JsonKind::kString)) scanner.Expected(fmt::format("a text as {}", what));
  return std::string(scanner.String());
}

std::vector<std::size_t> ReadShape(JsonScanner& scanner) {
  std::vector<std::size_t> shape;
  if (!scanner.NextIs(JsonKind::kArray)) scanner.Expected("an array as shape");
  scanner.EnterArray();
  while (scanner.NextElement()) {
    if (!scanner.NextIs(JsonKind::kNumber)) scanner.Expected("a whole number in a shape");
    const std::optional<std::int64_t> size = ParseInteger(scanner.Number());
    if (!size || *size < 0) scanner.Fail("a shape holds something else than whole numbers");
    if (shape.size() == 2) scanner.Fail("a tensor has more than two dimensions");
    shape.push_back(static_cast<std::size_t>(*size));
  }
  return shape;
}

// The elements in the order of rows; those of [n, 1] may be arrays of one.
void ReadData(JsonScanner& scanner, std::size_t most_rows, Tensor& tensor) {
  if (!scanner.NextIs(JsonKind::kArray)) scanner.Expected("an array as data");
  scanner.EnterArray();
  const auto take = [&] {
    if (tensor.data.size() == most_rows) {
      throw BadRequest(413, fmt::format("a tensor has more than {} elements", most_rows));
    }
    if (!ReadCell(scanner, tensor.data.emplace_back()) && !tensor.bad) {
      tensor.bad = tensor.data.size() - 1;
    }
  };
  while (scanner.NextElement()) {
    if (!scanner.NextIs(JsonKind::kArray)) {
      take();
      continue;
    }
    scanner.EnterArray();
    while (scanner.NextElement()) take();
  }
}

Tensor ReadInput(JsonScanner& scanner, std::size_t most_rows) {
  Tensor tensor;
  std::string_view member;
  if (!scanner.NextIs(JsonKind::kObject)) scanner.Expected("an object as input");
  scanner.EnterObject();
  while (scanner.NextKey(member)) {
    if (member == "name") {
      tensor.name = TextOf(scanner, "name of an input");
    } else if (member == "datatype") {
      tensor.type = TextOf(scanner, "datatype");
    } else if (member == "shape") {
      tensor.shape = ReadShape(scanner);
      tensor.has_shape = true;
    } else if (member == "data") {
      ReadData(scanner, most_rows, tensor);
      tensor.has_data = true;
    } else {
      scanner.Skip();
    }
  }
  return tensor;
}

std::string ReadOutput(JsonScanner& scanner) {
  std::string name;
  std::string_view member;
  if (!scanner.NextIs(JsonKind::kObject)) scanner.Expected("an object as output");
  scanner.EnterObject();
  while (scanner.NextKey(member)) {
    if (member == "name") {
      name = TextOf(scanner, "name of an output");
    } else {
      scanner.Skip();
    }
  }
  return name;
}

Inference ReadInference(std::string& body, const ServedModel& model, std::size_t most_rows) {
  JsonScanner scanner(body, true);
  Inference read;
  std::string_view member;
  const std::size_t most_tensors = model.Inputs().size() + 1000;
  const std::size_t most_outputs = model.Plan().results.size() + 1;
  if (!scanner.NextIs(JsonKind::kObject)) scanner.Expected("an object");
  scanner.EnterObject();
  while (scanner.NextKey(member)) {
    if (member == "id") {
      AppendJsonString(read.id, TextOf(scanner, "id"));
    } else if (member == "inputs") {
      if (!scanner.NextIs(JsonKind::kArray)) scanner.Expected("an array of inputs");
      scanner.EnterArray();
      read.has_inputs = true;
      while (scanner.NextElement()) {
        if (read.inputs.size() == most_tensors) scanner.Fail("there are far too many inputs");
        read.inputs.push_back(ReadInput(scanner, most_rows));
      }
    } else if (member == "outputs") {
      if (!scanner.NextIs(JsonKind::kArray)) scanner.Expected("an array of outputs");
      scanner.EnterArray();
      while (scanner.NextElement()) {
        if (read.outputs.size() == most_outputs) scanner.Fail("there are too many outputs");
        read.outputs.push_back(ReadOutput(scanner));
      }
    } else {
      scanner.Skip();
    }
  }
  scanner.Finish();
  return read;
}

// Throws unless the tensor is what it says it is; returns its rows.
std::size_t RowsOf(const Tensor& tensor) {
  const auto refuse = [&tensor](const std::string& what) {
    throw BadRequest(400, fmt::format("input {}: {}", Printable(tensor.name), what));
  };
  if (tensor.name.empty()) throw BadRequest(400, "an input has no name");
  if (!tensor.has_shape) refuse("it has no shape");
  if (!tensor.has_data) {
    refuse("it has no data; give its elements as JSON, which is all that is read");
  }
  if (std::find(kTypes.begin(), kTypes.end(), tensor.type) == kTypes.end()) {
    refuse(fmt::format("the data type \"{}\" is not read; it must be one of {}",
                       Printable(tensor.type), fmt::join(kTypes, ", ")));
  }
  const bool column =
      tensor.shape.size() == 1 || (tensor.shape.size() == 2 && tensor.shape[1] == 1);
  if (!column) refuse("its shape is neither [n] nor [n, 1]");
  if (tensor.data.size() != tensor.shape[0]) {
    refuse(fmt::format("its shape says {} elements, and its data has {}", tensor.shape[0],
                       tensor.data.size()));
  }
  return tensor.shape[0];
}

// The columns of an answer, each collected as JSON on its own.
class ColumnTexts {
 public:
  ColumnTexts(const ServedModel& model, const std::vector<std::string>& asked) : model_(model) {
    const tools::ResultColumns& results = model.Plan().results;
    texts_.resize(results.size() + 1);
    for (std::size_t i = 0; i < results.size(); ++i) sinks_.emplace_back(texts_[i], *results[i]);
    written_.assign(texts_.size(), asked.empty());
    if (asked.empty()) {
      for (std::size_t i = 0; i < results.size(); ++i) order_.push_back(i);
    }
    for (const std::string& name : asked) {
      order_.push_back(Find(name));
      if (written_[order_.back()]) {
        throw BadRequest(400, fmt::format("output {} is asked for twice", Printable(name)));
      }
      written_[order_.back()] = true;
    }
    reason_if_any_ = asked.empty();
  }

  void Write(RowRun& run, RowCounts& counts) {
    run.Write(
        counts,
        [this](std::size_t column) -> tools::CellSink& {
          if (!written_[column]) return unwritten_;
          Separate(column);
          return sinks_[column];
        },
        [this](long status, const std::string& reason) {
          const std::size_t column = sinks_.size();
          if (!written_[column]) return;
          Separate(column);
          if (status == 0) {
            texts_[column] += "null";
          } else {
            AppendJsonString(texts_[column], reason);
            any_reason_ = true;
          }
        });
  }

  // Bytes so far.
  std::size_t Size() const {
    std::size_t size = 0;
    for (const std::string& text : texts_) size += text.size();
    return size;
  }

  void Finish(std::string& out, std::size_t rows) {
    if (reason_if_any_ && any_reason_) order_.push_back(sinks_.size());
    const char* separator = "";
    for (const std::size_t column : order_) {
      const bool reason = column == sinks_.size();
      const tools::ResultColumn* result = reason ? nullptr : model_.Plan().results[column].get();
      out += separator;
      separator = ",";
      out += "{\"name\":";
      AppendJsonString(out, reason ? kReason : std::string_view(result->Name()));
      out += ",\"datatype\":\"";
      out += reason ? "BYTES" : TensorTypeOf(result->Kind());
      out += fmt::format("\",\"shape\":[{}],\"data\":[", rows);
      out += texts_[column];
      std::string().swap(texts_[column]);
      out += "]}";
    }
  }

 private:
  // A tensor of texts holds nothing but texts.
  class Sink final : public tools::CellSink {
   public:
    Sink(std::string& out, const tools::ResultColumn& column)
        : json_(out), out_(out), of_texts_(TensorTypeOf(column.Kind()) == "BYTES") {}
    void Empty() override { json_.Empty(); }
    void Text(std::string_view text) override { json_.Text(text); }
    void Number(double number) override {
      if (of_texts_) {
        AppendJsonString(out_, FormatNumber(number));
      } else {
        json_.Number(number);
      }
    }
    void Whole(long number) override {
      if (of_texts_) out_ += '"';
      json_.Whole(number);
      if (of_texts_) out_ += '"';
    }

   private:
    JsonSink json_;
    std::string& out_;
    bool of_texts_;
  };

  std::size_t Find(const std::string& name) const {
    const tools::ResultColumns& results = model_.Plan().results;
    const auto found = std::find_if(results.begin(), results.end(),
                                    [&name](const auto& column) { return column->Name() == name; });
    if (found == results.end() && name != kReason) {
      throw BadRequest(400, fmt::format("the model has no output \"{}\"", Printable(name)));
    }
    return static_cast<std::size_t>(found - results.begin());
  }
  void Separate(std::size_t column) {
    if (!texts_[column].empty()) texts_[column] += ',';
  }

  const ServedModel& model_;
  std::vector<std::string> texts_;  // of each column, and of the reasons
  std::vector<Sink> sinks_;
  tools::NoSink unwritten_;
  std::vector<bool> written_;  // which columns, and whether the reasons
  std::vector<std::size_t> order_;
  bool reason_if_any_ = false;
  bool any_reason_ = false;
};

}  // namespace

std::string_view TensorTypeOf(DataType type) {
  switch (type) {
    case DataType::kDouble:
      return "FP64";
    case DataType::kFloat:
      return "FP32";
    case DataType::kInteger:
      return "INT64";
    case DataType::kBoolean:
      return "BOOL";
    default:
      return "BYTES";
  }
}

std::string_view TensorTypeOf(CellKind kind) {
  switch (kind) {
    case CellKind::kNumber:
      return "FP64";
    case CellKind::kWhole:
      return "INT64";
    default:
      return "BYTES";
  }
}

std::string Infer(const ServedModel& model, std::string& body, const RequestBounds& bounds,
                  RowCounts& counts) try {
  Inference read = ReadInference(body, model, bounds.rows);
  if (!read.has_inputs || read.inputs.empty()) throw BadRequest(400, "there are no inputs");
  std::vector<const Tensor*> of_inputs(model.Inputs().size());
  const std::size_t rows = RowsOf(read.inputs.front());
  for (Tensor& tensor : read.inputs) {
    if (RowsOf(tensor) != rows) {
      throw BadRequest(400,
                       fmt::format("input {} has another number of rows than input {}",
                                   Printable(tensor.name), Printable(read.inputs.front().name)));
    }
    const std::size_t input = model.FindInput(tensor.name);
    if (input == ServedModel::kNoInput) continue;
    if (of_inputs[input] != nullptr) {
      throw BadRequest(400, fmt::format("input {} is given twice", Printable(tensor.name)));
    }
    of_inputs[input] = &tensor;
    if (tensor.bad) {
      throw BadRequest(400, fmt::format("input {}: element {} is an array or object",
                                        Printable(tensor.name), *tensor.bad + 1));
    }
    const auto& data = tensor.data;
    const auto other = std::find_if(data.begin(), data.end(), [&tensor](const CaseCell& cell) {
      return !cell.IsOf(tensor.type);
    });
    if (other != data.end()) {
      throw BadRequest(400,
                       fmt::format("input {}: element {} is no value of the data type {}",
                                   Printable(tensor.name), other - data.begin() + 1, tensor.type));
    }
    if (tensor.type != "FP32") continue;
    for (CaseCell& cell : tensor.data) cell = cell.InSinglePrecision();
  }
  ColumnTexts columns(model, read.outputs);
  RowCounts counted;
  RowRun run(model, rows == 1);
  const auto write = [&] {
    columns.Write(run, counted);
    CheckAnswer(columns.Size(), bounds);
  };
  for (std::size_t row = 0; row < rows; ++row) {
    if (run.IsFull()) write();
    CaseCell* cells = run.Add();
    for (std::size_t i = 0; i < of_inputs.size(); ++i) {
      if (of_inputs[i] != nullptr) cells[i] = of_inputs[i]->data[row];
    }
    run.Take();
  }
  write();
  counts = counted;

  std::string out = "{\"model_name\":";
  AppendJsonString(out, model.Id());
  out += fmt::format(",\"model_version\":\"{}\"", kModelVersion);
  if (!read.id.empty()) out += ",\"id\":" + read.id;
  out += ",\"outputs\":[";
  columns.Finish(out, rows);
  out += "]}\n";
  return out;
} catch (const JsonError& error) {
  throw BadRequest(400, error.what());
}

std::string InferenceMetadata(const ServedModel& model) {
  std::string out = "{\"name\":";
  AppendJsonString(out, model.Id());
  out +=
      fmt::format(",\"versions\":[\"{}\"],\"platform\":\"pmml_svm\",\"inputs\":[", kModelVersion);
  const auto add = [&out](std::string_view name, std::string_view type) {
    if (out.back() == '}') out += ',';
    out += "{\"name\":";
    AppendJsonString(out, name);
    out += fmt::format(",\"datatype\":\"{}\",\"shape\":[-1]}}", type);
  };
  for (const auto* var : model.Inputs()) {
    add(var->GetName(), TensorTypeOf(var->GetFieldType().data));
  }
  out += "],\"outputs\":[";
  for (const auto& column : model.Plan().results) add(column->Name(), TensorTypeOf(column->Kind()));
  out += "],\"properties\":{\"sha256\":\"" + model.Sha256() + "\"}}\n";
  return out;
}

}  // namespace svmscore::serve
