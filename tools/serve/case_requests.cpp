#include "tools/serve/case_requests.h"

#include <string_view>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "host/model/score_dict_var.h"
#include "host/text/printable.h"
#include "tools/serve/answer_text.h"

namespace svmscore::serve {
namespace {

// The id of a request as it is given back: a text or null; a number's spelling is a text. Empty for
// anything else, which is passed over.
std::string ReadId(JsonScanner& scanner) {
  std::string id;
  switch (scanner.Peek()) {
    case JsonKind::kNull:
      scanner.Null();
      return "null";
    case JsonKind::kString:
      AppendJsonString(id, scanner.String());
      return id;
    case JsonKind::kNumber:
      AppendJsonString(id, scanner.Number());
      return id;
    default:
      scanner.Skip();
      return {};
  }
}

constexpr const char* kNoId = "the id is no text, number or null";

CaseFault ReadArguments(JsonScanner& scanner, const ServedModel& model, RowRun& run,
                        CaseCell* cells) {
  if (!scanner.NextIs(JsonKind::kObject)) {
    scanner.Skip();
    return {"the member \"arguments\" is not an object", true};
  }
  CaseFault fault;
  std::string_view name;
  std::size_t guess = 0;
  const std::vector<std::string>& quoted = model.QuotedNames();
  const auto take = [&](std::size_t input) {
    guess = input + 1;
    if (!run.Give(input)) {
      fault = {fmt::format("{} is given twice", Printable(model.Inputs()[input]->GetName())), true};
      return scanner.Skip();
    }
    if (!ReadCell(scanner, cells[input]) && fault.what.empty()) {
      fault.what = fmt::format("{}: an array or object is no value",
                               Printable(model.Inputs()[input]->GetName()));
    }
  };
  scanner.EnterObject();
  while (true) {
    // Most clients write the inputs in the order of the model.
    if (guess < quoted.size() && scanner.NextKeyIs(quoted[guess])) {
      take(guess);
      continue;
    }
    if (!scanner.NextKey(name)) break;
    const std::size_t input = model.FindInput(name);
    if (input == ServedModel::kNoInput) {
      scanner.Skip();
      continue;
    }
    scanner.ForgetKey();
    take(input);
  }
  return fault;
}

// Writes the cases of a run as objects, `ids` being theirs as JSON.
void WriteCases(const ServedModel& model, RowRun& run, const std::vector<std::string>& ids,
                std::string& out, RowCounts& counts) {
  JsonSink sink(out);
  std::size_t row = 0;
  run.Write(
      counts,
      [&](std::size_t column) -> JsonSink& {
        if (column == 0) {
          if (!out.empty() && out.back() == '}') out += ',';
          out += "{\"id\":";
          out += ids[row++];
          out += ",\"results\":{";
        }
        out += model.ResultKeys()[column];
        return sink;
      },
      [&](long status, const std::string& reason) {
        if (status != 0) {
          out += ",\"reason\":";
          AppendJsonString(out, reason);
        }
        out += "}}";
      });
}

}  // namespace

CaseFault ReadCase(JsonScanner& scanner, const ServedModel& model, RowRun& run, std::string& id) {
  CaseCell* const cells = run.Add();
  id = "null";
  if (!scanner.NextIs(JsonKind::kObject)) {
    scanner.Skip();
    return {"the request is not an object", true};
  }
  CaseFault fault{"the request has no member \"arguments\"", true};
  bool has_id = true;
  std::string_view member;
  scanner.EnterObject();
  while (scanner.NextKey(member)) {
    if (member == "id") {
      id = ReadId(scanner);
      has_id = !id.empty();
    } else if (member == "arguments") {
      fault = ReadArguments(scanner, model, run, cells);
    } else {
      scanner.Skip();
    }
  }
  if (has_id) return fault;
  id = "null";
  return {kNoId, true};
}

void CheckAnswer(std::size_t size, const RequestBounds& bounds) {
  if (size <= bounds.answer) return;
  throw BadRequest(413, fmt::format("the answer would have more than {} bytes; send fewer rows at "
                                    "a time",
                                    bounds.answer));
}

std::string ScoreOne(const ServedModel& model, std::string& body, RowCounts& counts) try {
  JsonScanner scanner(body);
  RowRun run(model, true);
  std::vector<std::string> id(1);
  CaseFault fault = ReadCase(scanner, model, run, id[0]);
  scanner.Finish();
  if (fault.of_request) throw BadRequest(400, fault.what);
  if (fault.what.empty()) {
    run.Take();
  } else {
    run.Refuse(std::move(fault.what));
  }
  std::string out;
  out.reserve(256);
  WriteCases(model, run, id, out, counts);
  out += '\n';
  return out;
} catch (const JsonError& error) {
  throw BadRequest(400, error.what());
}

std::string ScoreMany(const ServedModel& model, std::string& body, const RequestBounds& bounds,
                      RowCounts& counts) try {
  JsonScanner scanner(body);
  RowRun run(model, false);
  RowCounts counted;
  std::string id = "null";
  std::string responses = "[";
  std::vector<std::string> ids;
  bool given = false;
  std::string_view member;
  const auto flush = [&] {
    WriteCases(model, run, ids, responses, counted);
    CheckAnswer(responses.size(), bounds);
    ids.clear();
  };
  scanner.EnterObject();
  while (scanner.NextKey(member)) {
    if (member == "id") {
      id = ReadId(scanner);
      if (id.empty()) scanner.Fail(kNoId);
    } else if (member != "requests") {
      scanner.Skip();
    } else {
      if (std::exchange(given, true)) scanner.Fail("it has the member \"requests\" twice");
      if (!scanner.NextIs(JsonKind::kArray)) scanner.Expected("an array of requests");
      scanner.EnterArray();
      for (std::size_t rows = 0; scanner.NextElement(); ++rows) {
        if (rows == bounds.rows) {
          throw BadRequest(413, fmt::format("the batch has more than {} requests", bounds.rows));
        }
        if (run.IsFull()) flush();
        CaseFault fault = ReadCase(scanner, model, run, ids.emplace_back());
        if (fault.what.empty()) {
          run.Take();
        } else {
          run.Refuse(std::move(fault.what));
        }
      }
      flush();
    }
  }
  scanner.Finish();
  if (!given) throw BadRequest(400, "the body has no member \"requests\"");
  counts = counted;
  return "{\"id\":" + id + ",\"responses\":" + responses + "]}\n";
} catch (const JsonError& error) {
  throw BadRequest(400, error.what());
}

}  // namespace svmscore::serve
