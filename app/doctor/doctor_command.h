// svmscore doctor: what an expert would find suspicious in a document.
#ifndef APP_DOCTOR_DOCTOR_COMMAND_H_
#define APP_DOCTOR_DOCTOR_COMMAND_H_

#include <string>

#include "app/options/command.h"
#include "app/table/table_options.h"
#include "host/xml/limits.h"

namespace svmscore::app {

class DoctorCommand : public Command {
 public:
  CLI::App* AddTo(CLI::App& program) override;
  ExitStatus Run() override;

 private:
  std::string model_;
  std::string input_;
  std::string expected_;
  std::string actual_;
  std::string plugin_;
  TableOptions table_;
  double tolerance_ = 1e-6;
  Limits limits_;
  bool json_ = false;
};

}  // namespace svmscore::app

#endif  // APP_DOCTOR_DOCTOR_COMMAND_H_
