// Texts and numbers as they stand in a page. Nothing that a document or a table holds becomes
// markup here. [any thread] Owns: the caller. Fails: std::bad_alloc.
#ifndef APP_REPORT_HTML_TEXT_H_
#define APP_REPORT_HTML_TEXT_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace svmscore::app {

// Bytes of a name that are shown; the whole name is in its title, up to the second number. Few, for
// a name may be on a page a thousand times.
inline constexpr std::size_t kNameShown = 60;
inline constexpr std::size_t kTitleShown = 300;

// Text as the content of an element or of a quoted attribute: characters of markup are written as
// references. Control characters, marks that change the direction of writing, and bytes that are
// not UTF-8 become visible escapes, as in Printable.
std::string Escaped(std::string_view text);
// The same for a text from elsewhere that is shown in a picture: shortened to about so many
// columns, where a wide character counts two.
std::string Brief(std::string_view text, std::size_t columns);

// A name from elsewhere, in an element of its own so that its direction changes nothing around it:
// shortened, with the whole name as title where it is.
std::string Name(std::string_view text, std::size_t longest = kNameShown);

// About `digits` significant digits, with a real minus sign. The smallest normal number, which
// some programs write for 0, and smaller ones read as 0.
std::string Number(double number, int digits = 4);
// So many digits after the point.
std::string Fixed(double number, int decimals);
// A share as a percentage.
std::string Percent(double share);
// A count with thin blanks between thousands.
std::string Count(std::uint64_t count);
// "1 case", "2 cases".
std::string Counted(std::uint64_t count, std::string_view what);
// A count in at most four characters, rounded: 950, 1.2k, 35k, 2M.
std::string ShortCount(std::uint64_t count);

}  // namespace svmscore::app

#endif  // APP_REPORT_HTML_TEXT_H_
