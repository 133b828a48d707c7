#include "capi/call_error.h"

#include <exception>
#include <new>

#include <fmt/format.h>

#include "host/model/message_codes.h"
#include "host/model/ss_exception.h"
#include "host/text/printable.h"
#include "tools/base/bad_input.h"
#include "tools/base/error_text.h"

namespace svmscore::capi {
namespace {

using MCZandor_850::SSException;

// Needs no memory when memory has run out.
svmscore_error& OutOfMemory() {
  static svmscore_error error{{SVMSCORE_MEMORY, 0, "out of memory", {}, {}, "out of memory"}};
  return error;
}
// Made while there is memory.
[[maybe_unused]] const svmscore_error& made_early = OutOfMemory();

std::string Sentence(std::string text) {
  if (!text.empty() && text[0] >= 'a' && text[0] <= 'z') {
    text[0] = static_cast<char>(text[0] - 'a' + 'A');
  }
  return text;
}

Reason Told(int kind, long code, const std::string& sentence, const std::string& place,
            const std::string& remedy) {
  Reason reason{kind, code, Printable(sentence), Printable(place), Printable(remedy), {}};
  reason.message = reason.sentence;
  if (!place.empty() && reason.sentence.find(reason.place) == std::string::npos) {
    reason.message += fmt::format(" ({})", reason.place);
  }
  if (!remedy.empty()) reason.message += fmt::format(". {}.", Sentence(reason.remedy));
  return reason;
}

int KindOf(const SSException& error) {
  switch (error.GetErrorCode()) {
    case code::kFileUnreadable:
    case code::kPluginUnusable:
    case code::kInstructionSet:
      return SVMSCORE_SYSTEM;
    default:
      return SVMSCORE_DOCUMENT;
  }
}

}  // namespace

void RefuseArgument(const std::string& sentence, const std::string& place,
                    const std::string& remedy) {
  throw Refusal(SVMSCORE_ARGUMENT, sentence, place, remedy);
}

void RefuseColumn(std::string_view column, const std::string& what, const std::string& remedy) {
  const std::string name(column);
  throw Refusal(SVMSCORE_TABLE,
                fmt::format("column \"{}\": {}", Shortened(name, kLongestInsert), what), name,
                remedy);
}

Reason ReasonOfException() {
  try {
    throw;
  } catch (const SSException& error) {
    Reason reason = Told(KindOf(error), error.GetErrorCode(), error.WithoutPlace(),
                         error.GetPlace(), error.GetRemedy());
    reason.message = Printable(tools::Explain(error));  // as the program tells it
    return reason;
  } catch (const Refusal& refusal) {
    return Told(refusal.Kind(), 0, refusal.what(), refusal.Place(), refusal.Remedy());
  } catch (const tools::BadCases& bad) {
    return Told(SVMSCORE_TABLE, 0, bad.what(), bad.Column(), {});
  } catch (const tools::BadDocument& bad) {
    return Told(SVMSCORE_DOCUMENT, 0, bad.what(), {}, {});
  } catch (const std::bad_alloc&) {
    return OutOfMemory().reason;
  } catch (const std::exception& other) {
    return Told(SVMSCORE_INTERNAL, 0, other.what(), {},
                "this is a fault of the library: report it");
  } catch (...) {
    return Told(SVMSCORE_INTERNAL, 0, "an unknown failure", {},
                "this is a fault of the library, or of a callback: report it");
  }
}

int Fail(svmscore_error** error) noexcept {
  try {
    Reason reason = ReasonOfException();
    const int kind = reason.kind;
    if (error != nullptr) {
      *error = kind == SVMSCORE_MEMORY ? &OutOfMemory() : new svmscore_error{std::move(reason)};
    }
    return kind;
  } catch (...) {
    if (error != nullptr) *error = &OutOfMemory();
    return SVMSCORE_MEMORY;
  }
}

}  // namespace svmscore::capi

using svmscore::capi::TextOf;

namespace {

const std::string kNoText;

}  // namespace

int svmscore_error_kind(const svmscore_error* error) {
  return error == nullptr ? SVMSCORE_OK : error->reason.kind;
}

long svmscore_error_code(const svmscore_error* error) {
  return error == nullptr ? 0 : error->reason.code;
}

svmscore_text svmscore_error_sentence(const svmscore_error* error) {
  return TextOf(error == nullptr ? kNoText : error->reason.sentence);
}

svmscore_text svmscore_error_place(const svmscore_error* error) {
  return TextOf(error == nullptr ? kNoText : error->reason.place);
}

svmscore_text svmscore_error_remedy(const svmscore_error* error) {
  return TextOf(error == nullptr ? kNoText : error->reason.remedy);
}

svmscore_text svmscore_error_message(const svmscore_error* error) {
  return TextOf(error == nullptr ? kNoText : error->reason.message);
}

void svmscore_error_free(svmscore_error* error) {
  if (error == &svmscore::capi::OutOfMemory()) return;
  delete error;
}
