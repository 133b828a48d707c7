// Requests to score one case or many: {"id", "arguments": {NAME: VALUE}}, and {"id", "requests":
// [...]} of these. Answers: {"id", "results": {COLUMN: CELL}}, and {"id", "responses": [...]}.
//
// An argument that the model does not know is passed over; one that is absent, null or an empty
// text is missing. Text and truth values are read as the same cell of a file. A case that cannot be
// understood, such as one whose argument is an array, fails alone with status 90027. The results of
// a case that failed end with its "reason".
//
// [any thread] Lives: `body`, which is rewritten, for the call. Fails: BadRequest, which scores
// nothing; std::bad_alloc.
#ifndef TOOLS_SERVE_CASE_REQUESTS_H_
#define TOOLS_SERVE_CASE_REQUESTS_H_

#include <cstddef>
#include <stdexcept>
#include <string>

#include "tools/serve/row_run.h"

namespace svmscore::serve {

// A request that cannot be answered: the status of HTTP, and a sentence that says why.
class BadRequest : public std::runtime_error {
 public:
  BadRequest(unsigned status, const std::string& why) : std::runtime_error(why), status_(status) {}
  unsigned Status() const { return status_; }

 private:
  unsigned status_;
};

// What a request may ask for.
struct RequestBounds {
  std::size_t rows = 0;
  std::size_t answer = static_cast<std::size_t>(-1);  // bytes
};
// Fails: BadRequest where an answer of so many bytes is too long.
void CheckAnswer(std::size_t size, const RequestBounds& bounds);

// What is wrong with a case; empty where nothing is.
struct CaseFault {
  std::string what;
  bool of_request = false;  // and not of a value
};

// Adds a row to the run and reads {"id", "arguments"} into its cells, and the id, as JSON. Fails:
// JsonError; std::bad_alloc.
CaseFault ReadCase(JsonScanner& scanner, const ServedModel& model, RowRun& run, std::string& id);

std::string ScoreOne(const ServedModel& model, std::string& body, RowCounts& counts);
std::string ScoreMany(const ServedModel& model, std::string& body, const RequestBounds& bounds,
                      RowCounts& counts);

}  // namespace svmscore::serve

#endif  // TOOLS_SERVE_CASE_REQUESTS_H_
