// Why a call of the C interface failed, and the boundary that nothing is thrown across.
#ifndef CAPI_CALL_ERROR_H_
#define CAPI_CALL_ERROR_H_

#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "capi/svmscore.h"

namespace svmscore::capi {

// What an error tells. The texts are on one line each, and UTF-8.
struct Reason {
  int kind = SVMSCORE_INTERNAL;
  long code = 0;
  std::string sentence;
  std::string place;
  std::string remedy;
  std::string message;
};

// Thrown inside the library for what no other part of it throws by itself.
class Refusal : public std::runtime_error {
 public:
  Refusal(int kind, const std::string& sentence, std::string place, std::string remedy)
      : std::runtime_error(sentence),
        kind_(kind),
        place_(std::move(place)),
        remedy_(std::move(remedy)) {}
  int Kind() const { return kind_; }
  const std::string& Place() const { return place_; }
  const std::string& Remedy() const { return remedy_; }

 private:
  int kind_;
  std::string place_;
  std::string remedy_;
};

// Throws a Refusal of kind SVMSCORE_ARGUMENT. `place` names the argument.
[[noreturn]] void RefuseArgument(const std::string& sentence, const std::string& place,
                                 const std::string& remedy = {});
// Throws a Refusal of kind SVMSCORE_TABLE. `column` is the name of the column.
[[noreturn]] void RefuseColumn(std::string_view column, const std::string& what,
                               const std::string& remedy = {});

// Where `pointer` is null, throws as RefuseArgument does.
inline void Require(const void* pointer, const char* name) {
  if (pointer == nullptr) RefuseArgument(std::string(name) + " is null", name);
}

// What the exception that is being handled means. Fails: std::bad_alloc.
Reason ReasonOfException();
// Puts what the exception that is being handled means into `error`, unless that is null, and
// returns its kind. Fails: never: where memory runs out too, that is the error.
int Fail(svmscore_error** error) noexcept;

// Calls `work`. Returns SVMSCORE_OK, or what Fail makes of what it throws.
template <typename Work>
int Guarded(svmscore_error** error, const Work& work) noexcept {
  try {
    work();
    return SVMSCORE_OK;
  } catch (...) {
    return Fail(error);
  }
}

inline svmscore_text TextOf(const std::string& text) {
  return {text.data(), text.size()};
}

}  // namespace svmscore::capi

struct svmscore_error {
  svmscore::capi::Reason reason;
};

#endif  // CAPI_CALL_ERROR_H_
