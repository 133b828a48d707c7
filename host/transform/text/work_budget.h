// How much work the search of a text may take.
#ifndef HOST_TRANSFORM_TEXT_WORK_BUDGET_H_
#define HOST_TRANSFORM_TEXT_WORK_BUDGET_H_

#include <cstddef>

namespace svmscore::transform {

// The work that one expression may do on a case, counted rather than timed, so that every machine
// gives up at the same point. A unit takes about a nanosecond, such as looking at one character. An
// expression whose work is spent has no answer.
class WorkBudget {
 public:
  // False where this is more than is left; then nothing is left.
  bool Spend(std::size_t units) {
    const bool enough = units <= left_;
    left_ = enough ? left_ - units : 0;
    return enough;
  }
  std::size_t Left() const { return left_; }

 private:
  std::size_t left_ = 500000000;
};

}  // namespace svmscore::transform

#endif  // HOST_TRANSFORM_TEXT_WORK_BUDGET_H_
