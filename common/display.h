// MCDisplay_850: labelled values and containers as lines of text, for diagnosis.
#ifndef COMMON_DISPLAY_H_
#define COMMON_DISPLAY_H_

#include <iosfwd>
#include <list>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace MCDisplay_850 {

// Where every function here writes: the process's standard output until it is redirected. There is
// one stream for the process and no lock, so only one thread at a time may write or redirect.
// README.md in this folder describes the layout of the lines. Texts are the same in every locale.
extern std::ostream* pGlobalMCOutStream;

std::ostream& GetOutStream();
// `os` must outlive its use here.
void SetOutStream(std::ostream& os);

// Redirects the diagnostic stream to `os` for as long as this object lives, even if a write throws.
class ScopedOutStream {
 public:
  explicit ScopedOutStream(std::ostream& os);
  ~ScopedOutStream();
  ScopedOutStream(const ScopedOutStream&) = delete;
  ScopedOutStream& operator=(const ScopedOutStream&) = delete;

 private:
  std::ostream& saved_;
};

// Writes `newlines` line ends, each flushed, then the text, and flushes. A null text writes
// nothing.
void DisplayText(const long& newlines, const char* text);
void DisplayText(const long& newlines, const std::string& text);

// Single values. A missing number is written as "miss".
void DisplayI(std::string label, int value);
void DisplayL(std::string label, long value);
void DisplayD(std::string label, double value);
// 17 significant digits: enough to read the same double back.
void DisplayDF(std::string label, double value);
void DisplayB(std::string label, bool value);
void DisplayS(std::string label, std::string value);
// The local time; nothing where it is not available.
void DisplayTimeStamp(std::string label);

// Lists. `full_precision` writes one number a line, to 17 digits.
void DisplayIV(std::string label, const std::vector<int>& values);
void DisplayUV(std::string label, const std::vector<unsigned int>& values);
void DisplayBV(std::string label, const std::vector<bool>& values);
void DisplaySV(std::string label, const std::vector<std::string>& values);
void DisplayDV(std::string label, const std::vector<double>& values, bool full_precision);
// A null array has no elements; a negative size counts as 0.
void DisplayDA(std::string label, const double* values, int size, bool full_precision);
void DisplayDAS(const double* values, int size);
void DisplayVPDI(std::string label, const std::vector<std::pair<double, int>>& pairs);
void DisplayVPD(std::string label, const std::vector<std::pair<double, double>>& pairs);
void DisplayVPII(std::string label, const std::vector<std::pair<int, int>>& pairs);

// A lower triangle stored row by row; the form without a label writes only the numbers. Elements
// beyond the end of the list are left out.
void DisplayDVTR(std::string label, const std::vector<double>& elements, int rows);
void DisplayDVTRS(const std::vector<double>& elements, int rows);

// Lists of lists.
void DisplayDVV(std::string label, const std::vector<std::vector<double>>& lists);
void DisplaySVV(std::string label, const std::vector<std::vector<std::string>>& lists);
// The number of columns is that of the first row.
void DisplayBVV(std::string label, const std::vector<std::vector<bool>>& rows);

// Maps.
void DisplayIIM(std::string label, const std::map<int, int>& map);
void DisplayDDM(std::string label, const std::map<double, double>& map);
void DisplayVIM(std::string label, const std::map<int, int>& map);
void DisplayIntVecIntMap(std::string label, const std::map<std::vector<int>, int>& map);
void DisplayIntVecDVecMap(std::string label,
                          const std::map<std::vector<int>, std::vector<double>>& map);
void DisplaySLDM(std::string label, const std::map<std::list<std::string>, double>& map);

}  // namespace MCDisplay_850

#endif  // COMMON_DISPLAY_H_
