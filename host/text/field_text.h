// Texts of typed fields, and the numbers that they are kept as.
// [any thread] Owns: the caller. Fails: by returning nothing; FieldTextFromNumber by
// std::bad_alloc.
#ifndef HOST_TEXT_FIELD_TEXT_H_
#define HOST_TEXT_FIELD_TEXT_H_

#include <optional>
#include <string>
#include <string_view>

#include "host/text/api.h"
#include "host/text/field_types.h"
#include "host/text/number_key.h"

namespace svmscore {

// The truth that `text` spells: true or false in any case, 1 or 0; white space around it is
// dropped.
SVMSCORE_HOST_API std::optional<bool> ParseBoolean(std::string_view text);

// The number that a value of `type` is kept as: a boolean as 0 or 1, a float rounded to 32 bits,
// dates and times as field_types.h says; an integer's text must be a whole number.
// Nothing where the text is not a value of the type, or the type is a string.
SVMSCORE_HOST_API std::optional<double> NumberFromFieldText(std::string_view text, FieldType type);

// The same, but whole numbers of an integer field stay distinct beyond 2^53.
SVMSCORE_HOST_API std::optional<NumberKey> KeyFromFieldText(std::string_view text, FieldType type);

// The reverse: how a number that is kept for `type` is written.
SVMSCORE_HOST_API std::string FieldTextFromNumber(double number, FieldType type);

}  // namespace svmscore

#endif  // HOST_TEXT_FIELD_TEXT_H_
