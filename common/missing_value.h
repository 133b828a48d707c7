// MCCommon_850::MCMV: the missing value of the support code.
#ifndef COMMON_MISSING_VALUE_H_
#define COMMON_MISSING_VALUE_H_

namespace MCCommon_850 {

// Not the host's system-missing number: this one is for diagnostic text only.
class MCMV {
 public:
  static double Missing() { return gMissingValue; }
  // NaN is not missing.
  static bool IsMissing(double x) { return x == gMissingValue; }

  // The most negative finite double.
  static double gMissingValue;
};

}  // namespace MCCommon_850

#endif  // COMMON_MISSING_VALUE_H_
