// Texts that look alike and differ.
// [any thread] Owns: the caller. Fails: std::bad_alloc.
#ifndef HOST_TEXT_LOOK_ALIKES_H_
#define HOST_TEXT_LOOK_ALIKES_H_

#include <string>
#include <string_view>

#include "host/text/api.h"

namespace svmscore {

// The text with each character beyond ASCII that is blank or not seen at all, such as a no-break
// space, written as an escape: \u00A0. Other characters stay.
SVMSCORE_HOST_API std::string SpellInvisible(std::string_view text);

// The text with `replacement` in the place of each of those characters.
SVMSCORE_HOST_API std::string ReplaceInvisible(std::string_view text, std::string_view replacement);

// Whether the texts are different bytes for the same letters: an accented letter may be one
// character, or a letter and an accent that is put on it. False where one is not UTF-8.
SVMSCORE_HOST_API bool AreComposedDifferently(std::string_view a, std::string_view b);

}  // namespace svmscore

#endif  // HOST_TEXT_LOOK_ALIKES_H_
