// Where the cells of results go: a line of text, or a column of numbers.
#ifndef TOOLS_SCORE_CELL_SINK_H_
#define TOOLS_SCORE_CELL_SINK_H_

#include <string_view>

namespace svmscore::tools {

// Takes exactly one call a cell. [one thread] for each sink. Lives: the text for the call. Fails:
// as the class says that takes the cells.
class CellSink {
 public:
  virtual ~CellSink() = default;
  virtual void Empty() = 0;
  virtual void Text(std::string_view text) = 0;
  // A category of the target, by its position and its text.
  virtual void Category(int, std::string_view text) { Text(text); }
  virtual void Number(double number) = 0;
  virtual void Whole(long number) = 0;
};

// For results that nobody asks for.
class NoSink final : public CellSink {
 public:
  void Empty() override {}
  void Text(std::string_view) override {}
  void Number(double) override {}
  void Whole(long) override {}
};

}  // namespace svmscore::tools

#endif  // TOOLS_SCORE_CELL_SINK_H_
