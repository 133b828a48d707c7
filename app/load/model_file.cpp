#include "app/load/model_file.h"

#include <utility>

#include <fmt/format.h>

#include "app/base/failure.h"

namespace svmscore::app {

using MCZandor_850::SSException;

namespace {

LoadChecks ChecksOf(bool strict) {
  return strict ? LoadChecks::kStrict : LoadChecks::kRefuse;
}

}  // namespace

Plugin LoadPlugin(const std::string& path) {
  try {
    return Plugin(path);
  } catch (const SSException& error) {
    throw Failure(kModelError, tools::Explain(error));
  }
}

void RefuseModel(const std::string& path, const SSException& error) {
  throw Failure(kModelError, fmt::format("{}: {}", path, tools::Explain(error)));
}

LoadedModel LoadModelFile(tools::DocumentSource& source, const std::string& plugin, bool strict) {
  const Plugin loaded = LoadPlugin(plugin);
  try {
    return LoadModel(loaded, source.Parse(), ChecksOf(strict));
  } catch (const SSException& error) {
    RefuseModel(source.Path(), error);
  }
}

DescribedModel LoadModelToDescribe(tools::DocumentSource& source, const std::string& plugin,
                                   bool strict) {
  const Plugin loaded = LoadPlugin(plugin);
  try {
    PmmlDocument document = source.Parse();
    std::string refused;
    try {
      return {LoadModel(loaded, std::move(document), ChecksOf(strict)), std::nullopt};
    } catch (const SSException& error) {
      refused = tools::Explain(error);
    }
    return {LoadModel(loaded, source.Parse(), LoadChecks::kTolerate), std::move(refused)};
  } catch (const SSException& error) {
    RefuseModel(source.Path(), error);
  }
}

}  // namespace svmscore::app
