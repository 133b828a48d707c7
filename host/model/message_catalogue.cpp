// The sentence behind every message code, and what to do about it. {0}, {1}, ... are replaced by
// the message parts in order.
#include <algorithm>
#include <array>

#include "host/model/message_codes.h"
#include "host/model/ss_exception.h"

namespace MCZandor_850 {
namespace {

namespace code = svmscore::code;

struct Message {
  int code;
  const char* sentence;
  const char* remedy;
};

constexpr std::array kCatalogue = {
    Message{code::kLacksChildren, "element {0} lacks the child elements that it needs",
            "add at least one child element of the kind that {0} lists, or export the model again"},
    Message{code::kChildMissing, "element {0} is missing in element {1}",
            "add the element, or export the model again with a producer that writes it"},
    Message{code::kAttributeMissing, "attribute {0} is missing in element {1}",
            "add the attribute"},
    Message{code::kBadValue, "\"{0}\" is not an allowed value of attribute {1} in element {2}",
            "correct the value"},
    Message{code::kInvalidContent, "the content of element {0} is not valid",
            "check that the target field lists its categories and that the number of machines fits "
            "them: one machine for two categories or a regression, k(k-1)/2 for k categories "
            "one-against-one"},
    Message{code::kLengthsDiffer,
            "the {0} numbers of {1} in {2} do not match the {3} numbers of {4} in {5}",
            "give both lists the same length"},
    Message{code::kNotScorable,
            "attribute {0} of the {1} document says that the model is not to "
            "be scored",
            "use a model that its author released for scoring, or remove the attribute"},
    Message{code::kFileUnreadable, "cannot read {0}: {1}", "check the name and the permissions"},
    Message{code::kNotWellFormed, "the document is not well-formed XML: {0}",
            "correct the document at this place, or export it again"},
    Message{code::kExternalEntity,
            "the document refers to the external entity {0}, which is never "
            "read",
            "put the content into the document itself"},
    Message{code::kUnsupported, "{0} in element {1} is not supported",
            "export the model without it, or compute the field before scoring"},
    Message{code::kPluginUnusable, "cannot load the plug-in {0}: {1}",
            "check the installation, or name the plug-in with SVMSCORE_PLUGIN"},
    Message{code::kNoTarget, "no field of {0} is the model's target",
            "give one MiningField the usageType target (predicted before version 4.2)"},
    Message{code::kNeedsIntake, "the document needs the step {0}: {1}",
            "export the document again so that it needs no such step, or allow changes to it"},
    Message{code::kUnknownVersion, "version {0} of PMML is not known",
            "export the model in a version from 3.0 to 4.4"},
    Message{code::kDuplicateName, "the name {0} of element {1} is used twice",
            "give the fields different names"},
    Message{code::kUnknownField, "element {1} refers to the field {0}, which does not exist",
            "correct the name, or declare the field"},
    Message{code::kDerivedCycle, "derived fields are computed from each other in a circle: {0}",
            "break the circle"},
    Message{code::kBadContent, "{0} in element {1}", "correct the document"},
    Message{code::kUnknownFunction, "there is no function {0}",
            "define the function in TransformationDictionary, or use a built-in one"},
    Message{code::kArgumentCount, "function {0} is given {1} arguments but takes {2}",
            "correct the arguments"},
    Message{code::kInstructionSet, "the way to compute cannot be used: {0}",
            "correct the environment variable, or unset it to use the best way"},
    Message{code::kBeyondLimit, "{0} exceeds the limit of {1}",
            "if you trust the document, raise the limit {2} (--limit {2}=NUMBER)"},
    Message{code::kFieldNotNumeric, "field {0} has the type {1}, but element {2} needs a number",
            "encode a text by NormDiscrete derived fields, a date or time by a derived field of "
            "the type dateDaysSince, dateTimeSecondsSince or timeSeconds, or declare a number"},
};

std::string Fill(const std::string& text, const std::vector<std::string>& parts) {
  std::string filled;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool hole = i + 2 < text.size() && text[i] == '{' && text[i + 2] == '}' &&
                      text[i + 1] >= '0' && text[i + 1] <= '9';
    if (!hole) {
      filled += text[i];
      continue;
    }
    const auto index = static_cast<std::size_t>(text[i + 1] - '0');
    filled += index < parts.size() ? parts[index] : "?";
    i += 2;
  }
  return filled;
}

class Catalogue : public ScoreContext::IErrorFormater {
 public:
  std::string Sentence(int code, const std::vector<std::string>& parts) const override {
    // Content that should be a number is refused with 260153 too, though it is not an attribute.
    if (code == code::kBadValue && parts.size() == 1) return '"' + parts[0] + "\" is not a number";
    const Message* message = Find(code);
    if (message != nullptr) return Fill(message->sentence, parts);
    std::string text = "error";
    for (const std::string& part : parts) text += ' ' + part;
    return text;
  }

  std::string Remedy(int code, const std::vector<std::string>& parts) const override {
    const Message* message = Find(code);
    return message == nullptr ? std::string() : Fill(message->remedy, parts);
  }

 private:
  static const Message* Find(int code) {
    const auto* found =
        std::find_if(kCatalogue.begin(), kCatalogue.end(),
                     [code](const Message& message) { return message.code == code; });
    return found == kCatalogue.end() ? nullptr : found;
  }
};

Catalogue catalogue;

}  // namespace

ScoreContext::IErrorFormater::~IErrorFormater() = default;

ScoreContext::IErrorFormater* gErrorFormater = &catalogue;

}  // namespace MCZandor_850
