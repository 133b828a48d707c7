// White space as XML defines it.
#ifndef HOST_TEXT_BLANK_H_
#define HOST_TEXT_BLANK_H_

namespace svmscore {

inline bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

}  // namespace svmscore

#endif  // HOST_TEXT_BLANK_H_
