// svmscore report: all about a model and its cases on one page.
#ifndef APP_REPORT_REPORT_COMMAND_H_
#define APP_REPORT_REPORT_COMMAND_H_

#include <string>

#include "app/options/command.h"
#include "app/table/table_options.h"
#include "host/xml/limits.h"

namespace svmscore::app {

class ReportCommand : public Command {
 public:
  CLI::App* AddTo(CLI::App& program) override;
  ExitStatus Run() override;

 private:
  void CheckFiles() const;

  std::string model_;
  std::string input_;
  std::string actual_;
  std::string background_;
  std::string output_;
  std::string plugin_;
  TableOptions table_;
  Limits limits_;
};

}  // namespace svmscore::app

#endif  // APP_REPORT_REPORT_COMMAND_H_
