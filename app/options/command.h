// What every subcommand of the program is.
#ifndef APP_OPTIONS_COMMAND_H_
#define APP_OPTIONS_COMMAND_H_

#include <CLI/CLI.hpp>

#include "app/base/failure.h"

namespace svmscore::app {

class Command {
 public:
  virtual ~Command() = default;
  // Declares the subcommand and its arguments, which Run then reads. Called once.
  virtual CLI::App* AddTo(CLI::App& program) = 0;
  // Failures are thrown as Failure.
  virtual ExitStatus Run() = 0;
};

}  // namespace svmscore::app

#endif  // APP_OPTIONS_COMMAND_H_
