// The interface of every subcommand.
#ifndef APP_OPTIONS_COMMAND_H_
#define APP_OPTIONS_COMMAND_H_

#include <CLI/CLI.hpp>

#include "app/base/failure.h"

namespace svmscore::app {

class Command {
 public:
  virtual ~Command() = default;
  // Declares the subcommand and its arguments, which Run then reads. Called once. Owns: `program`
  // what is returned. Lives: this object, longer than the parsing.
  virtual CLI::App* AddTo(CLI::App& program) = 0;
  // Called after parsing. Fails: Failure, std::bad_alloc.
  virtual ExitStatus Run() = 0;
};

}  // namespace svmscore::app

#endif  // APP_OPTIONS_COMMAND_H_
