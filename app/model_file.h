// Loading the model that the command line names.
#ifndef APP_MODEL_FILE_H_
#define APP_MODEL_FILE_H_

#include <optional>
#include <string>

#include "app/document_source.h"
#include "host/pmml/loader.h"
#include "host/pmml/plugin.h"
#include "host/ss_exception.h"

namespace svmscore::app {

// `plugin` is the file of the plug-in; empty for the installed one. With `strict` a document is
// refused that is not scored as it is written. Throws a Failure(kModelError) with the message's
// code, what is wrong, where, and what to do.
LoadedModel LoadModelFile(DocumentSource& source, const std::string& plugin, bool strict);

// The plug-in of that file. Throws as LoadModelFile does.
Plugin LoadPlugin(const std::string& path);

// [CODE] what is wrong (where). What to do.
std::string Explain(const MCZandor_850::SSException& error);

// The failure for a model that cannot be used: names the file and explains the error.
[[noreturn]] void RefuseModel(const std::string& path, const MCZandor_850::SSException& error);

// A model to describe: one that cannot be scored with is loaded all the same where that is
// possible, and comes with the reason.
struct DescribedModel {
  LoadedModel loaded;
  std::optional<std::string> refused;
};
DescribedModel LoadModelToDescribe(DocumentSource& source, const std::string& plugin, bool strict);

}  // namespace svmscore::app

#endif  // APP_MODEL_FILE_H_
