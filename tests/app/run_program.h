// Runs the built program and takes what it prints.
#ifndef TESTS_APP_RUN_PROGRAM_H_
#define TESTS_APP_RUN_PROGRAM_H_

#include <string>
#include <vector>

#include <sys/types.h>

namespace svmscore::app {

struct Ran {
  int status = -1;  // exit status, or 128 and the number of the signal that ended it
  std::string out;
  std::string err;
  long peak_kib = 0;  // most memory held at a time
};

// The program on its way, with its three streams at files.
pid_t StartProgram(const std::vector<std::string>& arguments, const std::string& in,
                   const std::string& out, const std::string& err);
// Kills a program that still runs after an hour where `may_hang`; else waits as long as it takes.
Ran WaitFor(pid_t program, bool may_hang = false);

// Runs the program with `input` on standard input.
Ran RunProgram(const std::vector<std::string>& arguments, const std::string& input = {});
// The same with a line of shell, in which "$SVMSCORE" is the program.
Ran RunShell(const std::string& line, const std::string& input = {});

// The path of a file in tests/app/data.
std::string Data(const std::string& name);

using Arguments = std::vector<std::string>;
// Scores the table with that document, for predictions alone.
Ran ScoreTable(const std::string& document, Arguments options, const std::string& cases);

}  // namespace svmscore::app

#endif  // TESTS_APP_RUN_PROGRAM_H_
