// What the program tells on standard error.
#ifndef APP_MESSAGES_H_
#define APP_MESSAGES_H_

#include <cstdio>
#include <string>

namespace svmscore::app {

// A message that cannot be written, for the disk is full or nobody reads it, ends no run.
inline void Tell(const std::string& text) {
  std::fputs(text.c_str(), stderr);
}

}  // namespace svmscore::app

#endif  // APP_MESSAGES_H_
