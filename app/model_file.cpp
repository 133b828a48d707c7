#include "app/model_file.h"

#include <utility>

#include <fmt/format.h>

#include "app/failure.h"

namespace svmscore::app {

using MCZandor_850::SSException;

namespace {

LoadChecks ChecksOf(bool strict) {
  return strict ? LoadChecks::kStrict : LoadChecks::kRefuse;
}

}  // namespace

std::string Explain(const SSException& error) {
  std::string text = fmt::format("[{}] {}", error.GetErrorCode(), error.what());
  std::string remedy = error.GetRemedy();
  if (remedy.empty()) return text;
  if (remedy[0] >= 'a' && remedy[0] <= 'z') remedy[0] = static_cast<char>(remedy[0] - 'a' + 'A');
  return fmt::format("{}. {}.", text, remedy);
}

Plugin LoadPlugin(const std::string& path) {
  try {
    return Plugin(path);
  } catch (const SSException& error) {
    throw Failure(kModelError, Explain(error));
  }
}

void RefuseModel(const std::string& path, const SSException& error) {
  throw Failure(kModelError, fmt::format("{}: {}", path, Explain(error)));
}

LoadedModel LoadModelFile(DocumentSource& source, const std::string& plugin, bool strict) {
  const Plugin loaded = LoadPlugin(plugin);
  try {
    return LoadModel(loaded, source.Parse(), ChecksOf(strict));
  } catch (const SSException& error) {
    RefuseModel(source.Path(), error);
  }
}

DescribedModel LoadModelToDescribe(DocumentSource& source, const std::string& plugin, bool strict) {
  const Plugin loaded = LoadPlugin(plugin);
  try {
    PmmlDocument document = source.Parse();
    std::string refused;
    try {
      return {LoadModel(loaded, std::move(document), ChecksOf(strict)), std::nullopt};
    } catch (const SSException& error) {
      refused = Explain(error);
    }
    return {LoadModel(loaded, source.Parse(), LoadChecks::kTolerate), std::move(refused)};
  } catch (const SSException& error) {
    RefuseModel(source.Path(), error);
  }
}

}  // namespace svmscore::app
