// Which quotation marks of CSV begin and end quoted cells.
#ifndef APP_TABLE_QUOTATION_H_
#define APP_TABLE_QUOTATION_H_

#include <cstdint>

namespace svmscore::app {

// Follows the quotation marks of a text, one after the other.
class Quotation {
 public:
  // The text at hand is inside a quoted cell.
  bool IsOpen() const { return open_; }
  // For the mark at byte `at`. `begins_cell`: it is the first byte of a cell, if no cell is open.
  void Meet(std::uint64_t at, bool begins_cell) {
    if (open_) {
      open_ = false;
      just_closed_ = at + 1;
    } else {
      // A mark right after a closing one is a doubled mark: the cell goes on. A mark elsewhere is
      // broken quoting, which the parser of the row refuses.
      open_ = begins_cell || at == just_closed_;
    }
  }

 private:
  bool open_ = false;
  std::uint64_t just_closed_ = 0;  // the byte after the last closing mark; 0 before the first
};

}  // namespace svmscore::app

#endif  // APP_TABLE_QUOTATION_H_
