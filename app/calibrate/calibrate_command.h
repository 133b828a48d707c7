// svmscore calibrate: probabilities and intervals from a labelled hold-out.
#ifndef APP_CALIBRATE_CALIBRATE_COMMAND_H_
#define APP_CALIBRATE_CALIBRATE_COMMAND_H_

#include <string>

#include "app/options/command.h"
#include "app/table/table_options.h"
#include "host/xml/limits.h"

namespace svmscore::app {

class CalibrateCommand : public Command {
 public:
  CLI::App* AddTo(CLI::App& program) override;
  ExitStatus Run() override;

 private:
  void CheckFiles() const;

  std::string model_;
  std::string holdout_;
  std::string actual_;
  std::string output_;
  std::string plugin_;
  bool json_ = false;
  double confidence_ = 0.95;
  bool confidence_given_ = false;
  TableOptions table_;
  Limits limits_;
};

}  // namespace svmscore::app

#endif  // APP_CALIBRATE_CALIBRATE_COMMAND_H_
