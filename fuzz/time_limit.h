// Ends an input that takes more processor time than any should.
#ifndef FUZZ_TIME_LIMIT_H_
#define FUZZ_TIME_LIMIT_H_

namespace svmscore::fuzz {

// Ten times what the slowest input takes under the sanitizers, on an idle machine. The process's
// own processor time is counted, so that a busy machine does not cause findings.
inline constexpr int kSecondsForAnInput = 120;

// Once the process, with all its threads, has used that many seconds of processor time since this
// was made, says so and ends the process as any other fault would, so that the engine keeps the
// input. Only one may exist at a time.
class TimeLimit {
 public:
  explicit TimeLimit(int seconds = kSecondsForAnInput);
  ~TimeLimit();
  TimeLimit(const TimeLimit&) = delete;
  TimeLimit& operator=(const TimeLimit&) = delete;
};

}  // namespace svmscore::fuzz

#endif  // FUZZ_TIME_LIMIT_H_
