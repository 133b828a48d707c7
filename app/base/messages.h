// What the program tells on standard error.
#ifndef APP_BASE_MESSAGES_H_
#define APP_BASE_MESSAGES_H_

#include <string>
#include <string_view>

namespace svmscore::app {

// A message that cannot be written, for the disk is full or nobody reads it, ends no run.

// Writes "svmscore: " and the message as one line, as Printable() spells it: names of a document
// or a table neither end the line nor steer the terminal.
void Tell(std::string_view message) noexcept;
// Writes what the program has put together itself: lines that are printable already, and what
// moves the cursor.
void TellAsItIs(const std::string& text) noexcept;

}  // namespace svmscore::app

#endif  // APP_BASE_MESSAGES_H_
