// Pieces that every section of a page is made of. What is called "html" is markup already; a
// "text" is plain. [any thread] Owns: the caller. Fails: std::bad_alloc.
#ifndef APP_REPORT_PAGE_PARTS_H_
#define APP_REPORT_PAGE_PARTS_H_

#include <string>
#include <string_view>
#include <vector>

namespace svmscore::app {

// A picture with a caption above it and a note below it; an empty note is left out.
std::string Figure(std::string_view caption_html, std::string_view picture_html,
                   std::string_view note_html);
// Figures side by side, as many as there is room for.
std::string Figures(const std::vector<std::string>& figures);

// A figure with text beside it where there is room, or else below it.
std::string Beside(std::string_view figure_html, std::string_view text_html);

std::string Paragraph(std::string_view html);
// A paragraph in small and soft letters.
std::string Note(std::string_view html);
// What to give for a section to be there.
std::string Give(std::string_view html);

// A number that stands out, and what it is.
struct Tile {
  std::string number_html;
  std::string meaning_html;
};
std::string Tiles(const std::vector<Tile>& tiles);

struct Fact {
  std::string_view name;
  std::string html;
};
// Facts with empty contents are left out.
std::string Facts(const std::vector<Fact>& facts);

// A table that scrolls where the page is too narrow. The first cell of each row is its heading. A
// column whose cells are all dashes is left out.
struct PageTable {
  std::string name;  // plain text
  std::string caption_html;
  std::vector<std::string> head_html;
  std::vector<bool> is_number;  // parallel to the head
  std::vector<std::vector<std::string>> rows_html;
};
inline constexpr const char* kDash = "\u2013";
std::string Table(PageTable table);

// Opens with a click or a key.
std::string Details(std::string_view summary_html, std::string_view content_html);
// Nothing to click where there is little: details only from so many rows on.
inline constexpr std::size_t kRowsOpen = 12;

}  // namespace svmscore::app

#endif  // APP_REPORT_PAGE_PARTS_H_
