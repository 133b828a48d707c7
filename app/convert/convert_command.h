// svmscore convert: a model of LIBSVM as a PMML document.
#ifndef APP_CONVERT_CONVERT_COMMAND_H_
#define APP_CONVERT_CONVERT_COMMAND_H_

#include <string>
#include <vector>

#include "app/options/command.h"
#include "host/xml/limits.h"

namespace svmscore::app {

class ConvertCommand : public Command {
 public:
  CLI::App* AddTo(CLI::App& program) override;
  ExitStatus Run() override;

 private:
  void CheckFiles() const;

  std::string model_;
  std::string ranges_;
  std::vector<std::string> names_;
  std::vector<std::string> labels_;
  std::string output_ = "-";
  Limits limits_;
};

}  // namespace svmscore::app

#endif  // APP_CONVERT_CONVERT_COMMAND_H_
