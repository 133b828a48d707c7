// Why a run of the program ends early, and with which exit status.
#ifndef APP_BASE_FAILURE_H_
#define APP_BASE_FAILURE_H_

#include <stdexcept>
#include <string>
#include <utility>

namespace svmscore::app {

// The program's exit statuses, as its documentation lists them.
enum ExitStatus : int {
  kDone = 0,
  kInternalError = 1,
  kDisagrees = 1,  // verify and the like: the model does not give what it should
  kUsageError = 2,
  kModelError = 3,
  kSomeCaseFailed = 4,  // or, without --strict, all of them
  kInputError = 5,
  kOutputError = 6,
};

// Thrown where the run cannot go on; main prints the message, unless it is empty, and returns the
// status.
class Failure : public std::runtime_error {
 public:
  // `message` is one line, whatever it holds. `lines` follow it, and are printable already.
  Failure(ExitStatus status, const std::string& message, std::string lines = {})
      : std::runtime_error(message), status_(status), lines_(std::move(lines)) {}
  ExitStatus Status() const { return status_; }
  const std::string& Lines() const { return lines_; }

 private:
  ExitStatus status_;
  std::string lines_;
};

}  // namespace svmscore::app

#endif  // APP_BASE_FAILURE_H_
