// Ends an input that takes more processor time than any should.
#ifndef FUZZ_TIME_LIMIT_H_
#define FUZZ_TIME_LIMIT_H_

namespace svmscore::fuzz {

// Ten times what the slowest input takes under the sanitizers, by itself. It is the process's own
// time that counts, so that a busy machine makes no finding.
inline constexpr int kSecondsForAnInput = 120;

// One at a time. When the process, with all its threads, has used so many seconds of processor time
// since, says so and ends it as any other fault would: the engine keeps the input.
class TimeLimit {
 public:
  explicit TimeLimit(int seconds = kSecondsForAnInput);
  ~TimeLimit();
  TimeLimit(const TimeLimit&) = delete;
  TimeLimit& operator=(const TimeLimit&) = delete;
};

}  // namespace svmscore::fuzz

#endif  // FUZZ_TIME_LIMIT_H_
