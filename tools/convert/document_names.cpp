#include "tools/convert/document_names.h"

#include <algorithm>
#include <unordered_set>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "tools/convert/document_text.h"
#include "tools/convert/text_lines.h"

namespace svmscore::tools {
namespace {

void CheckTexts(ConversionInput input, const char* what, const std::vector<std::string>& texts) {
  std::unordered_set<std::string_view> known;
  for (const std::string& text : texts) {
    const auto refuse = [&](const char* why, const char* remedy) {
      throw ConversionError(input, 0, fmt::format("the {} {} {}", what, Quoted(text), why), remedy);
    };
    if (text.empty()) refuse("is empty", "give one for each");
    if (!IsXmlText(text)) {
      refuse("is not UTF-8, or holds characters that a document cannot hold", "spell it otherwise");
    }
    if (!known.insert(text).second) refuse("is given twice", "give each once");
  }
}

std::size_t CountFeatures(const LibsvmModel& model, const std::optional<ScaleRanges>& ranges,
                          const std::vector<std::string>& names) {
  const bool has_ranges = ranges && !ranges->features.empty();
  const std::int32_t scaled = has_ranges ? ranges->features.rbegin()->first : 0;
  const auto count = static_cast<std::size_t>(std::max(model.largest_index, scaled));
  if (names.empty() && count == 0) {
    throw ConversionError(ConversionInput::kNames, 0,
                          "no support vector has a feature, so that the model does not tell which "
                          "features there are",
                          "name the features");
  }
  if (names.empty()) return count;
  if (names.size() > static_cast<std::size_t>(kMostFeatures)) {
    throw ConversionError(
        ConversionInput::kNames, 0,
        fmt::format("{} features are named, and a model can have {}", names.size(), kMostFeatures),
        "train on fewer features");
  }
  if (names.size() < count) {
    throw ConversionError(
        ConversionInput::kNames, 0,
        fmt::format("{} features are named, and there is a feature {} in {}", names.size(), count,
                    model.largest_index >= scaled ? "the model" : "the ranges"),
        "name all, in the order of their numbers");
  }
  return names.size();
}

std::vector<std::string> LabelsOf(const LibsvmModel& model, const std::vector<std::string>& given) {
  std::vector<std::string> own;
  for (const std::int64_t label : model.labels) own.push_back(std::to_string(label));
  if (model.type == SvmType::kOneClass) own = {"1", "-1"};
  if (given.empty()) return own;
  if (given.size() == own.size()) return given;
  const std::string sentence = own.empty()
                                   ? "a regression has no labels"
                                   : fmt::format("{} labels are given, and the model has {}: {}",
                                                 given.size(), own.size(), fmt::join(own, ", "));
  throw ConversionError(ConversionInput::kLabels, 0, sentence,
                        own.empty() ? "give none" : "give one for each, in this order");
}

}  // namespace

DocumentNames NamesOf(const LibsvmModel& model, const std::optional<ScaleRanges>& ranges,
                      const LibsvmOptions& options) {
  DocumentNames names;
  const std::size_t count = CountFeatures(model, ranges, options.names);
  CheckTexts(ConversionInput::kNames, "name", options.names);
  names.features = options.names;
  for (std::size_t i = names.features.size(); i < count; ++i) {
    names.features.push_back(fmt::format("x{}", i + 1));
  }
  names.labels = LabelsOf(model, options.labels);
  CheckTexts(ConversionInput::kLabels, "label", names.labels);
  std::unordered_set<std::string> taken(names.features.begin(), names.features.end());
  const auto unused = [&taken](std::string name) {
    while (!taken.insert(name).second) name += '_';
    return name;
  };
  names.target = unused("target");
  for (std::size_t i = 0; ranges && i < count; ++i) {
    names.scaled.push_back(unused(names.features[i] + "_scaled"));
  }
  return names;
}

}  // namespace svmscore::tools
