// Pieces of JSON answers.
#ifndef TOOLS_SERVE_ANSWER_TEXT_H_
#define TOOLS_SERVE_ANSWER_TEXT_H_

#include <string>
#include <string_view>

#include "tools/base/json_string.h"
#include "tools/score/cell_sink.h"

namespace svmscore::serve {

using tools::AppendJsonString;

// A number as svmscore score writes it. REQUIRES: it is finite.
void AppendNumber(std::string& out, double number);
void AppendWhole(std::string& out, long number);

// Appends a cell as JSON, spelled as in JSON lines: null where there is none, and for a number that
// is not finite.
class JsonSink final : public tools::CellSink {
 public:
  explicit JsonSink(std::string& out) : out_(out) {}
  void Empty() override { out_ += "null"; }
  void Text(std::string_view text) override { AppendJsonString(out_, text); }
  void Number(double number) override;
  void Whole(long number) override { AppendWhole(out_, number); }

 private:
  std::string& out_;
};

// {"message": ...}, or {"error": ...} for clients of the inference protocol.
std::string ErrorBody(std::string_view what, bool protocol);

}  // namespace svmscore::serve

#endif  // TOOLS_SERVE_ANSWER_TEXT_H_
