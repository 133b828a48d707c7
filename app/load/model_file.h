// Loading the model that the command line names.
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

// `plugin` is the file of the plug-in; empty for the installed one. Throws a Failure(kModelError)
// with the message's code, what is wrong, where, and what to do.
LoadedModel LoadModelFile(tools::DocumentSource& source, const std::string& plugin,
                          LoadChecks checks);

// The plug-in of that file. Throws as LoadModelFile does.
Plugin LoadPlugin(const std::string& path);

// The failure for a model that cannot be used: names the file and explains the error.
[[noreturn]] void RefuseModel(const std::string& path, const MCZandor_850::SSException& error);

// A model to describe: one that cannot be scored with is loaded all the same where that is
// possible, and comes with the reason. To the letter it is not.
struct DescribedModel {
  LoadedModel loaded;
  std::optional<std::string> refused;
};
DescribedModel LoadModelToDescribe(tools::DocumentSource& source, const std::string& plugin,
                                   LoadChecks checks);

}  // namespace svmscore::app

#endif  // APP_LOAD_MODEL_FILE_H_
