// The program: from arguments to an exit status.
#ifndef APP_CLI_PROGRAM_H_
#define APP_CLI_PROGRAM_H_

namespace svmscore::app {

// Runs the subcommand that the arguments name. Prints what goes wrong on standard error; throws
// nothing.
int RunProgram(int argc, char** argv);

}  // namespace svmscore::app

#endif  // APP_CLI_PROGRAM_H_
