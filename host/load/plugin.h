// The plug-in: found, loaded, and asked for translators.
#ifndef HOST_LOAD_PLUGIN_H_
#define HOST_LOAD_PLUGIN_H_

#include <memory>
#include <string>

#include "host/text/api.h"
#include "host/translate/translator.h"

namespace svmscore {

class SVMSCORE_HOST_API Plugin {
 public:
  // Loads the shared library at `path`, or, for an empty path, the one that the environment
  // variable SVMSCORE_PLUGIN named when it was first asked for, or else the one beside this library
  // or in its subfolder svmscore. It stays loaded for the life of the process, so that models may
  // outlive this object. [any thread] Fails: SSException (260305), std::bad_alloc.
  explicit Plugin(const std::string& path = {});

  // A new translator of the plug-in. [any thread] Owns: the caller. Fails: std::bad_alloc.
  std::unique_ptr<MCZandor_850::BaseTranslator> GiveTranslator() const;
  const std::string& Path() const { return path_; }

 private:
  std::string path_;
  MCZandor_850::GiveMyTranslatorFunction give_translator_ = nullptr;
};

}  // namespace svmscore

#endif  // HOST_LOAD_PLUGIN_H_
