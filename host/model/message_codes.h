// The codes of the host's message catalogue; message_catalogue.cpp holds their sentences.
#ifndef HOST_MODEL_MESSAGE_CODES_H_
#define HOST_MODEL_MESSAGE_CODES_H_

namespace svmscore::code {

// Codes that the plug-in raises. In parentheses: the message parts, in order.
inline constexpr int kLacksChildren = 260114;     // (parent)
inline constexpr int kChildMissing = 260115;      // (child, parent)
inline constexpr int kAttributeMissing = 260120;  // (attribute, element)
inline constexpr int kBadValue = 260153;          // (value, attribute, element)
inline constexpr int kInvalidContent = 260221;    // (element)
inline constexpr int kLengthsDiffer = 260251;     // (count, list, parent, count, list, parent)
inline constexpr int kNotScorable = 260281;       // (attribute, element)

// Codes of the host itself.
inline constexpr int kFileUnreadable = 260301;   // (file, reason)
inline constexpr int kNotWellFormed = 260302;    // (reason)
inline constexpr int kExternalEntity = 260303;   // (system identifier)
inline constexpr int kUnsupported = 260304;      // (construct, element)
inline constexpr int kPluginUnusable = 260305;   // (file, reason)
inline constexpr int kNoTarget = 260306;         // (element)
inline constexpr int kNeedsIntake = 260307;      // (step, its consequence)
inline constexpr int kUnknownVersion = 260308;   // (version)
inline constexpr int kDuplicateName = 260310;    // (name, element)
inline constexpr int kUnknownField = 260311;     // (field, element)
inline constexpr int kDerivedCycle = 260312;     // (chain of names)
inline constexpr int kBadContent = 260313;       // (what is wrong, element)
inline constexpr int kUnknownFunction = 260314;  // (function)
inline constexpr int kArgumentCount = 260315;    // (function, given, expected)
inline constexpr int kFieldNotNumeric = 260316;  // (field, type, element)
inline constexpr int kInstructionSet = 260317;   // (what is wrong)
inline constexpr int kBeyondLimit = 260318;      // (what is limited, limit, name of the limit)

}  // namespace svmscore::code

#endif  // HOST_MODEL_MESSAGE_CODES_H_
