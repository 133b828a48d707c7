// How far a long call goes before Python is asked whether it should end.
#ifndef PYTHON_SRC_PACE_H_
#define PYTHON_SRC_PACE_H_

#include <algorithm>
#include <chrono>
#include <cstddef>

#include <nanobind/nanobind.h>

namespace svmscore::python {

using Clock = std::chrono::steady_clock;

// How many rows are taken before Python may handle Ctrl-C: as many as take a moment, which for a
// large model are few. Their bits do not depend on it.
class Pace {
 public:
  explicit Pace(std::size_t first = 1024, std::size_t least = 64) : least_(least), rows_(first) {}

  std::size_t Rows() const { return rows_; }
  void Took(Clock::duration time) {
    if (time < std::chrono::milliseconds(100)) rows_ = std::min(2 * rows_, kMost);
    if (time > std::chrono::milliseconds(400)) rows_ = std::max(rows_ / 2, least_);
  }

 private:
  static constexpr std::size_t kMost = 65536;
  std::size_t least_;
  std::size_t rows_;
};

// Throws what a handler raises. The caller holds the interpreter lock.
inline void HandleSignals() {
  if (PyErr_CheckSignals() != 0) throw nanobind::python_error();
}

}  // namespace svmscore::python

#endif  // PYTHON_SRC_PACE_H_
