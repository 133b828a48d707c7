// The version decides whether transformations exist, so it must be readable.
#include <array>
#include <charconv>
#include <optional>

#include "host/intake/steps.h"
#include "host/xml/attributes.h"
#include "host/xml/edit.h"
#include "host/xml/transcoder.h"

namespace svmscore::intake {
namespace {

struct Version {
  int major = 0;
  int minor = 0;
  bool operator==(const Version&) const = default;
  std::string Text() const { return std::to_string(major) + '.' + std::to_string(minor); }
};

constexpr int kOldestMajor = 2;
constexpr Version kNewest{4, 4};

// Two numbers with `separator` between them, and whatever follows.
std::optional<Version> ParseVersion(std::string_view text, char separator) {
  Version version;
  const char* end = text.data() + text.size();
  const auto major = std::from_chars(text.data(), end, version.major);
  if (major.ec != std::errc() || major.ptr == end || *major.ptr != separator) return std::nullopt;
  const auto minor = std::from_chars(major.ptr + 1, end, version.minor);
  if (minor.ec != std::errc() || version.major < 0 || version.minor < 0) return std::nullopt;
  return version;
}

std::optional<Version> NamespaceVersion(const std::string& name) {
  const std::string_view mark = "/PMML-";
  const std::size_t at = name.rfind(mark);
  if (at == std::string::npos) return std::nullopt;
  return ParseVersion(std::string_view(name).substr(at + mark.size()), '_');
}

// Whether it is the namespace of a version that was published.
bool IsKnown(const std::string& name, const std::optional<Version>& version) {
  if (!version || version->major < kOldestMajor || version->major > kNewest.major) return false;
  constexpr std::array kLastMinor = {1, 2, kNewest.minor};
  const std::string rest = "://www.dmg.org/PMML-" + std::to_string(version->major) + '_' +
                           std::to_string(version->minor);
  return version->minor <= kLastMinor.at(static_cast<std::size_t>(version->major - kOldestMajor)) &&
         (name == "http" + rest || name == "https" + rest);
}

std::string_view Trim(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t\r\n");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

}  // namespace

void CheckRoot(Intake& intake) {
  const std::string root = NameOf(intake.Root());
  if (root == "PMML") return;
  intake.Tell("root-name", intake.Root(), "a root other than PMML", root);
}

void AllowDerivedFields(Intake& intake) {
  const std::string version = FindAttribute(intake.Root(), "version").value_or("");
  if (version.starts_with('3') || version.starts_with('4')) return;
  intake.Tell("version-raised", intake.Root());
  SetAttribute(intake.Root(), "version", "4.0");
}

void SettleVersion(Intake& intake) {
  DOMElement* root = intake.Root();
  const std::string text = FindAttribute(root, "version").value_or("");
  const std::optional<Version> stated = ParseVersion(Trim(text), '.');
  const std::string name = ToUtf8(root->getNamespaceURI());
  const std::optional<Version> named = NamespaceVersion(name);
  const std::optional<Version> major_only = ParseVersion(std::string(Trim(text)) + ".0", '.');
  const Version version = stated ? *stated : named ? *named : major_only ? *major_only : kNewest;
  const bool known = version.major >= kOldestMajor && version.major <= kNewest.major;
  if (stated && named && *stated != *named) {
    intake.Tell(Kind("version-disagreement"), root);
  } else if (!IsKnown(name, named)) {
    intake.Tell(name.empty() ? Kind("namespace-missing") : Kind("namespace-unknown"), root);
  }
  if (!known) {
    intake.Tell("version-unknown", root, version.Text());
    return SetAttribute(root, "version", kNewest.Text());
  }
  // A translator looks at the first character.
  if (text.starts_with(std::to_string(version.major))) return;
  intake.Tell(stated || major_only ? Kind("version-spelling")
              : named              ? Kind("version-from-namespace")
                                   : Kind("version-assumed"),
              root);
  SetAttribute(root, "version", version.Text());
}

}  // namespace svmscore::intake
