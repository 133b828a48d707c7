// Loading the model that the command line names. [one thread] for each source. Owns: the caller.
// Lives: arguments for the call. Fails: Failure(kModelError) with the message's code, what is
// wrong, where, and what to do; std::bad_alloc.
#ifndef APP_LOAD_MODEL_FILE_H_
#define APP_LOAD_MODEL_FILE_H_

#include <optional>
#include <string>

#include "host/load/loader.h"
#include "host/load/plugin.h"
#include "host/model/ss_exception.h"
#include "tools/base/document_source.h"
#include "tools/base/error_text.h"

namespace svmscore::app {

// `plugin` is the file of the plug-in; empty for the installed one.
LoadedModel LoadModelFile(tools::DocumentSource& source, const std::string& plugin,
                          LoadChecks checks);

// The plug-in of that file; empty for the installed one.
Plugin LoadPlugin(const std::string& path);

// Throws the failure for a model that cannot be used; it names the file and explains the error.
[[noreturn]] void RefuseModel(const tools::DocumentSource& source,
                              const MCZandor_850::SSException& error);
[[noreturn]] void RefuseModel(const std::string& path, const MCZandor_850::SSException& error);

// A model to describe. One that score refuses is loaded anyway if possible, and comes with the
// reason; not so to the letter.
struct DescribedModel {
  LoadedModel loaded;
  std::optional<std::string> refused;
};
DescribedModel LoadModelToDescribe(tools::DocumentSource& source, const std::string& plugin,
                                   LoadChecks checks);

}  // namespace svmscore::app

#endif  // APP_LOAD_MODEL_FILE_H_
