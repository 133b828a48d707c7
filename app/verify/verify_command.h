// svmscore verify: does a model give what it should?
#ifndef APP_VERIFY_VERIFY_COMMAND_H_
#define APP_VERIFY_VERIFY_COMMAND_H_

#include <string>
#include <vector>

#include "app/options/command.h"
#include "app/options/reading_option.h"
#include "app/table/table_options.h"
#include "host/load/loader.h"

namespace svmscore::app {

class VerifyCommand : public Command {
 public:
  CLI::App* AddTo(CLI::App& program) override;
  ExitStatus Run() override;

 private:
  void CheckArguments() const;
  ExitStatus WriteRecords(const LoadedModel& loaded, const std::string& document) const;

  std::string model_;
  std::string input_;
  std::string expected_;
  std::string write_;
  std::string plugin_;
  TableOptions table_;
  Limits limits_;
  double tolerance_ = 1e-6;
  ReadingOptions reading_;
};

}  // namespace svmscore::app

#endif  // APP_VERIFY_VERIFY_COMMAND_H_
