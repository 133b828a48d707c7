// svmscore score: cases in, scores out.
#ifndef APP_SCORE_SCORE_COMMAND_H_
#define APP_SCORE_SCORE_COMMAND_H_

#include <optional>
#include <string>
#include <vector>

#include "app/options/command.h"
#include "app/options/reading_option.h"
#include "app/table/file_part.h"
#include "app/table/table_options.h"
#include "host/xml/limits.h"

namespace svmscore::app {

class ScoreCommand : public Command {
 public:
  CLI::App* AddTo(CLI::App& program) override;
  ExitStatus Run() override;

 private:
  void CheckFiles() const;
  void SetPart(const std::string& text);

  std::string model_;
  std::string cases_ = "-";
  std::string output_ = "-";
  std::string format_ = "csv";
  std::string columns_ = "auto";
  std::string policy_;
  std::string log_;
  std::string plugin_;
  std::vector<std::string> passthrough_;
  Limits limits_;
  int threads_ = 0;
  bool prediction_only_ = false;
  bool decisions_ = false;
  bool reasons_ = false;
  bool strict_ = false;
  bool no_header_ = false;
  std::optional<FilePart> part_;
  TableOptions table_;
  ReadingOptions reading_;
};

}  // namespace svmscore::app

#endif  // APP_SCORE_SCORE_COMMAND_H_
