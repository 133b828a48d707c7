// svmscore describe: what a model is, and which parts of its document are not used.
#ifndef APP_DESCRIBE_DESCRIBE_COMMAND_H_
#define APP_DESCRIBE_DESCRIBE_COMMAND_H_

#include <string>

#include "app/options/command.h"
#include "app/options/reading_option.h"
#include "host/xml/limits.h"

namespace svmscore::app {

class DescribeCommand : public Command {
 public:
  CLI::App* AddTo(CLI::App& program) override;
  ExitStatus Run() override;

 private:
  std::string model_;
  std::string plugin_;
  Limits limits_;
  bool json_ = false;
  bool dump_ = false;
  ReadingOptions reading_;
};

}  // namespace svmscore::app

#endif  // APP_DESCRIBE_DESCRIBE_COMMAND_H_
