// Preloaded (LD_PRELOAD), this puts a program into a locale with a decimal comma, as an embedding
// program may have done. A program for which that fails ends at once.
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <locale>

namespace {

constexpr const char* kName = "de_DE.UTF-8";

struct CommaLocale {
  CommaLocale() {
    char half[8] = "";
    try {
      std::locale::global(std::locale(kName));
      std::setlocale(LC_ALL, kName);
      // The system's messages about files stay in the language of the tests.
      std::setlocale(LC_MESSAGES, "C");
      std::snprintf(half, sizeof half, "%.1f", 0.5);
    } catch (const std::exception& error) {
      std::fprintf(stderr, "comma_locale: %s\n", error.what());
    }
    if (std::strcmp(half, "0,5") == 0) return;
    std::fprintf(stderr, "comma_locale: %s writes 0.5 as \"%s\"\n", kName, half);
    std::_Exit(125);
  }
};

const CommaLocale in_force;

}  // namespace
