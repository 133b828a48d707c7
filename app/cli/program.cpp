#include "app/cli/program.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <new>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <CLI/CLI.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>

#include "app/base/failure.h"
#include "app/base/messages.h"
#include "app/calibrate/calibrate_command.h"
#include "app/convert/convert_command.h"
#include "app/describe/describe_command.h"
#include "app/doctor/doctor_command.h"
#include "app/explain/explain_command.h"
#include "app/options/command.h"
#include "app/report/report_command.h"
#include "app/score/score_command.h"
#include "app/serve/serve_command.h"
#include "app/verify/verify_command.h"
#include "tools/base/bad_input.h"

namespace svmscore::app {
namespace {

int Complain(ExitStatus status, const char* what) {
  if (*what != '\0') Tell(what);
  return status;
}

// The JSON library allocates in a destructor: memory that runs out there reaches no handler.
[[noreturn]] void OnTerminate() {
  try {
    if (const std::exception_ptr cause = std::current_exception()) std::rethrow_exception(cause);
  } catch (const std::bad_alloc&) {
    std::_Exit(Complain(kInternalError, "out of memory"));
  } catch (const std::exception& error) {
    Complain(kInternalError, error.what());
  } catch (...) {
    Complain(kInternalError, "internal error");
  }
  std::abort();
}

// The option library says only that a command is lacking where it does not know one.
std::string UsageText(const CLI::App& program, const CLI::ParseError& error) {
  const std::vector<std::string> unknown = program.remaining();
  if (!program.get_subcommands().empty() || unknown.empty() || unknown.front().starts_with('-')) {
    return error.what();
  }
  std::vector<std::string> names;
  for (const CLI::App* command : program.get_subcommands({})) names.push_back(command->get_name());
  return fmt::format("there is no command \"{}\"; the commands are {}", unknown.front(),
                     fmt::join(names, ", "));
}

// How the command that was given is used, or else the program.
std::string HelpHint(const CLI::App& program) {
  const std::vector<CLI::App*> given = program.get_subcommands();
  if (given.empty()) return "Run svmscore --help for what it takes.\n";
  const std::string name = "svmscore " + given.front()->get_name();
  const std::string usage = CLI::Formatter().make_usage(given.front(), name);
  const std::size_t begin = std::min(usage.find_first_not_of('\n'), usage.size());
  return fmt::format("{}\nRun {} --help for what it takes.\n",
                     usage.substr(begin, usage.find_last_not_of('\n') + 1 - begin), name);
}

int ParseAndRun(int argc, char** argv) {
  CLI::App program("Scores support vector machine models written in PMML.", "svmscore");
  program.set_version_flag("--version", "svmscore " SVMSCORE_VERSION);
  program.require_subcommand(1);
  program.footer(
      "Exit status: 0 done; 1 verify or doctor found something wrong; 2 usage; 3 the model cannot "
      "be "
      "used;\n4 no case could be scored, or some case failed under --strict; 5 the cases cannot be "
      "read; 6 the output cannot "
      "be written.");
  ScoreCommand score;
  DescribeCommand describe;
  VerifyCommand verify;
  DoctorCommand doctor;
  ConvertCommand convert;
  CalibrateCommand calibrate;
  ExplainCommand explain;
  ReportCommand report;
  ServeCommand serve;
  const std::array<Command*, 9> commands = {&score,     &describe, &verify, &doctor, &convert,
                                            &calibrate, &explain,  &report, &serve};
  std::array<CLI::App*, commands.size()> parsed{};
  for (std::size_t i = 0; i < commands.size(); ++i) parsed[i] = commands[i]->AddTo(program);
  try {
    program.parse(argc, argv);
  } catch (const CLI::Success& asked) {  // --help, --version
    const int status = program.exit(asked);
    return std::cout.flush() ? status : kOutputError;
  } catch (const CLI::ParseError& error) {
    Complain(kUsageError, UsageText(program, error).c_str());
    TellAsItIs(HelpHint(program));
    return kUsageError;
  }
  for (std::size_t i = 0; i < commands.size(); ++i) {
    if (parsed[i]->parsed()) return commands[i]->Run();
  }
  return kUsageError;
}

// A file that is opened where a standard stream was closed would take what is meant for the stream.
// What is opened here instead fails on use, as the closed stream would.
void OccupyStandardStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(stream, F_GETFD) < 0) {
      open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
  }
}

}  // namespace

int RunProgram(int argc, char** argv) {
  // A closed pipe and a file that may not grow are outputs that cannot be written.
  std::signal(SIGPIPE, SIG_IGN);
  std::set_terminate(OnTerminate);
  std::signal(SIGXFSZ, SIG_IGN);
  OccupyStandardStreams();
  try {
    return ParseAndRun(argc, argv);
  } catch (const Failure& failure) {
    Complain(failure.Status(), failure.what());
    TellAsItIs(failure.Lines());
    return failure.Status();
  } catch (const tools::BadCases& error) {
    return Complain(kInputError, error.what());
  } catch (const tools::BadDocument& error) {
    return Complain(kModelError, error.what());
  } catch (const xercesc::OutOfMemoryException&) {  // commands edit documents too
    return Complain(kInternalError, "out of memory");
  } catch (const std::bad_alloc&) {
    return Complain(kInternalError, "out of memory");
  } catch (const std::exception& error) {
    return Complain(kInternalError, error.what());
  } catch (...) {  // the parser's own exceptions are none of the standard's
    return Complain(kInternalError, "internal error");
  }
}

}  // namespace svmscore::app
