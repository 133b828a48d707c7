#include "app/load/model_file.h"

#include <utility>

#include <fmt/format.h>

#include "app/base/failure.h"

namespace svmscore::app {

using MCZandor_850::SSException;

namespace {

LoadedModel Load(const Plugin& plugin, tools::DocumentSource& source, LoadChecks checks) {
  return LoadModel(
      plugin, [&source] { return source.Parse(Arrays::kAsNumbers); }, checks);
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

void RefuseModel(const tools::DocumentSource& source, const SSException& error) {
  throw Failure(kModelError, fmt::format("{}: {}", source.Path(), tools::Explain(error, source)));
}

LoadedModel LoadModelFile(tools::DocumentSource& source, const std::string& plugin,
                          LoadChecks checks) {
  const Plugin loaded = LoadPlugin(plugin);
  try {
    return Load(loaded, source, checks);
  } catch (const SSException& error) {
    RefuseModel(source, error);
  }
}

DescribedModel LoadModelToDescribe(tools::DocumentSource& source, const std::string& plugin,
                                   LoadChecks checks) {
  const Plugin loaded = LoadPlugin(plugin);
  try {
    std::string refused;
    try {
      return {Load(loaded, source, checks), std::nullopt};
    } catch (const SSException& error) {
      // To the letter, only what a translator reads exists.
      if (checks == LoadChecks::kAsIs) throw;
      refused = tools::Explain(error, source);
    }
    return {LoadModel(loaded, source.Parse(Arrays::kAsNumbers), LoadChecks::kTolerate),
            std::move(refused)};
  } catch (const SSException& error) {
    RefuseModel(source, error);
  }
}

}  // namespace svmscore::app
