// Why a run of the program ends early, and with which exit status.
#ifndef APP_FAILURE_H_
#define APP_FAILURE_H_

#include <stdexcept>
#include <string>

namespace svmscore::app {

// The program's exit statuses, as its documentation lists them.
enum ExitStatus : int {
  kDone = 0,
  kInternalError = 1,
  kDisagrees = 1,  // verify and the like: the model does not give what it should
  kUsageError = 2,
  kModelError = 3,
  kSomeCaseFailed = 4,
  kInputError = 5,
  kOutputError = 6,
};

// Thrown where the run cannot go on; main prints the message, unless it is empty, and returns the
// status.
class Failure : public std::runtime_error {
 public:
  Failure(ExitStatus status, const std::string& message)
      : std::runtime_error(message), status_(status) {}
  ExitStatus Status() const { return status_; }

 private:
  ExitStatus status_;
};

}  // namespace svmscore::app

#endif  // APP_FAILURE_H_
