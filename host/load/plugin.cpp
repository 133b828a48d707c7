#include "host/load/plugin.h"

#include <cstdlib>
#include <filesystem>

#include <dlfcn.h>

#include "host/model/message_codes.h"
#include "host/model/ss_exception.h"
#include "host/xml/document.h"

namespace svmscore {
namespace {

namespace fs = std::filesystem;

constexpr const char* kFile = "svmscore_plugin.so";

// What SVMSCORE_PLUGIN names: read once, for a program may change its environment as it loads.
const std::string& NamedPath() {
  static const std::string path = [] {
    const char* named = std::getenv("SVMSCORE_PLUGIN");
    return std::string(named == nullptr ? "" : named);
  }();
  return path;
}

// Where the plug-in is by default: beside this library, or in the subfolder svmscore.
std::string DefaultPath() {
  if (!NamedPath().empty()) return NamedPath();
  Dl_info self{};
  if (dladdr(reinterpret_cast<void*>(&StartXerces), &self) == 0 || self.dli_fname == nullptr) {
    return kFile;
  }
  const fs::path folder = fs::path(self.dli_fname).parent_path();
  std::error_code ignored;
  for (const fs::path& path : {folder / kFile, folder / "svmscore" / kFile}) {
    if (fs::exists(path, ignored)) return path.string();
  }
  return (folder / kFile).string();
}

}  // namespace

Plugin::Plugin(const std::string& path) : path_(path.empty() ? DefaultPath() : path) {
  void* library = dlopen(path_.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
  if (library == nullptr) ThrowAt(nullptr, code::kPluginUnusable, path_, dlerror());
  void* entry = dlsym(library, "GiveMyTranslator");
  if (entry == nullptr) ThrowAt(nullptr, code::kPluginUnusable, path_, dlerror());
  give_translator_ = reinterpret_cast<MCZandor_850::GiveMyTranslatorFunction>(entry);
}

std::unique_ptr<MCZandor_850::BaseTranslator> Plugin::GiveTranslator() const {
  return std::unique_ptr<MCZandor_850::BaseTranslator>(give_translator_());
}

}  // namespace svmscore
