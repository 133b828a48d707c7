#include "common/display.h"

#include <cstdio>
#include <ctime>
#include <iostream>

#include "common/display_format.h"

namespace MCDisplay_850 {

using svmscore::display::FullOrMiss;
using svmscore::display::GeneralOrMiss;

std::ostream* pGlobalMCOutStream = &std::cout;

std::ostream& GetOutStream() {
  return *pGlobalMCOutStream;
}

void SetOutStream(std::ostream& os) {
  pGlobalMCOutStream = &os;
}

ScopedOutStream::ScopedOutStream(std::ostream& os) : saved_(GetOutStream()) {
  SetOutStream(os);
}

ScopedOutStream::~ScopedOutStream() {
  SetOutStream(saved_);
}

void DisplayText(const long& newlines, const char* text) {
  if (text != nullptr) DisplayText(newlines, std::string(text));
}

void DisplayText(const long& newlines, const std::string& text) {
  std::ostream& os = GetOutStream();
  for (long i = 0; i < newlines; ++i) os << std::endl;
  os << text << std::flush;
}

void DisplayI(std::string label, int value) {
  DisplayText(1, label + " = " + std::to_string(value));
}

void DisplayL(std::string label, long value) {
  DisplayText(1, label + " = " + std::to_string(value));
}

void DisplayD(std::string label, double value) {
  DisplayText(1, label + " = " + GeneralOrMiss(value));
}

void DisplayDF(std::string label, double value) {
  DisplayText(1, label + " = " + FullOrMiss(value));
}

void DisplayB(std::string label, bool value) {
  DisplayText(1, label + (value ? "true" : "false"));
}

void DisplayS(std::string label, std::string value) {
  DisplayText(1, label + value);
}

void DisplayTimeStamp(std::string label) {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  if (now == std::time_t{-1} || localtime_r(&now, &local) == nullptr) return;
  char stamp[80];
  std::snprintf(stamp, sizeof stamp, "%d-%02d-%02d-%02d-%02d-%02d", local.tm_year + 1900,
                local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec);
  DisplayText(1, label + ": " + stamp);
}

}  // namespace MCDisplay_850
