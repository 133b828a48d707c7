#include "tests/app/run_program.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/app/temporary_folder.h"

namespace svmscore::app {
namespace {

pid_t Start(std::vector<std::string> command, const std::string& in, const std::string& out,
            const std::string& err) {
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error("cannot fork");
  if (child > 0) return child;
  // Whoever started the tests may ignore these.
  for (int number = 1; number <= SIGRTMAX; ++number) std::signal(number, SIG_DFL);
  const bool redirected = std::freopen(in.c_str(), "r", stdin) != nullptr &&
                          std::freopen(out.c_str(), "w", stdout) != nullptr &&
                          std::freopen(err.c_str(), "w", stderr) != nullptr;
  std::vector<char*> argv;
  for (std::string& argument : command) argv.push_back(argument.data());
  argv.push_back(nullptr);
  setenv("SVMSCORE", SVMSCORE_PROGRAM, 1);
  if (redirected) execvp(argv[0], argv.data());
  _exit(127);
}

Ran Run(const std::vector<std::string>& command, const std::string& input) {
  const TemporaryFolder folder;
  const std::string in = folder.Write("in", input);
  Ran ran = WaitFor(Start(command, in, folder.Path("out"), folder.Path("err")));
  ran.out = ReadFile(folder.Path("out"));
  ran.err = ReadFile(folder.Path("err"));
  return ran;
}

std::vector<std::string> WithProgram(const std::vector<std::string>& arguments) {
  std::vector<std::string> command = {SVMSCORE_PROGRAM};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return command;
}

}  // namespace

pid_t StartProgram(const std::vector<std::string>& arguments, const std::string& in,
                   const std::string& out, const std::string& err) {
  return Start(WithProgram(arguments), in, out, err);
}

Ran WaitFor(pid_t program, bool may_hang) {
  int status = 0;
  struct rusage usage {};
  constexpr int kLooksASecond = 200;
  for (int looks = may_hang ? 3600 * kLooksASecond : 0; looks > 0; --looks) {
    // Once it has ended, it waits to be asked.
    siginfo_t ended{};
    waitid(P_PID, static_cast<id_t>(program), &ended, WEXITED | WNOHANG | WNOWAIT);
    if (ended.si_pid == program) break;
    if (looks == 1) kill(program, SIGKILL);
    usleep(1000000 / kLooksASecond);
  }
  wait4(program, &status, 0, &usage);
  return {
      WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), {}, {}, usage.ru_maxrss};
}

Ran RunProgram(const std::vector<std::string>& arguments, const std::string& input) {
  return Run(WithProgram(arguments), input);
}

Ran RunShell(const std::string& line, const std::string& input) {
  return Run({"bash", "-c", line}, input);
}

std::string Data(const std::string& name) {
  return std::string(DATA_FOLDER "/") + name;
}

Ran ScoreTable(const std::string& document, Arguments options, const std::string& cases) {
  options.insert(options.begin(), {"score", Data(document), "--prediction-only"});
  return RunProgram(options, cases);
}

}  // namespace svmscore::app
