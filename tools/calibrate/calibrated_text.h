// A document with the calibration of its machines written into it.
#ifndef TOOLS_CALIBRATE_CALIBRATED_TEXT_H_
#define TOOLS_CALIBRATE_CALIBRATED_TEXT_H_

#include <cstddef>
#include <string>
#include <vector>

#include "tools/calibrate/document_places.h"
#include "tools/calibrate/sigmoid_fit.h"

namespace svmscore::tools {

// What is written into a machine.
struct MachineCalibration {
  std::size_t machine = 0;  // its number in the document, from 0
  // Of a classification: p is that of the response.
  std::string response;
  std::string other;
  Sigmoid sigmoid;
  // Of a regression.
  double deviation = 0.0;
};

// The content of an Extension of this system for that machine, with its tags, in ASCII. Throws a
// BadDocument for a category that XML cannot hold. [any thread] Owns: the caller.
std::string ExtensionText(const MachineCalibration& calibration, bool classification,
                          const std::string& prefix);

// The document with these machines in this order, each with its extension as its first child in
// place of those of this system that it had, and with `note` in the header in place of an earlier
// one. Every other byte stays, whatever the encoding.
// REQUIRES: `machines` has every machine of `places` once. Throws as ExtensionText does.
// [any thread] Owns: the caller.
std::string CalibratedText(const std::string& document, const DocumentPlaces& places,
                           const std::vector<MachineCalibration>& machines, bool classification,
                           const std::string& note);

}  // namespace svmscore::tools

#endif  // TOOLS_CALIBRATE_CALIBRATED_TEXT_H_
