#include "app/base/messages.h"

#include <cstdio>
#include <new>

#include "host/text/printable.h"

namespace svmscore::app {

void Tell(std::string_view message) noexcept {
  try {
    std::fprintf(stderr, "svmscore: %s\n", Printable(message).c_str());
  } catch (const std::bad_alloc&) {
    std::fputs("svmscore: out of memory\n", stderr);
  }
}

void TellAsItIs(const std::string& text) noexcept {
  std::fputs(text.c_str(), stderr);
}

}  // namespace svmscore::app
