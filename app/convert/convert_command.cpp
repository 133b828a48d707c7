#include "app/convert/convert_command.h"

#include <fmt/format.h>

#include "app/base/failure.h"
#include "app/files/named_file.h"
#include "app/files/output_file.h"
#include "app/load/model_file.h"
#include "app/options/file_option.h"
#include "app/options/limit_option.h"
#include "app/options/name_list.h"
#include "host/model/ss_exception.h"
#include "tools/base/document_source.h"
#include "tools/convert/libsvm_document.h"

namespace svmscore::app {
namespace {

const std::string& TextOfFile(tools::DocumentSource& source) {
  try {
    return source.Text();
  } catch (const MCZandor_850::SSException& error) {
    RefuseModel(source.Path(), error);
  }
}

// The names that were given, of which there is one at least where the option is there.
std::vector<std::string> GivenNames(const std::vector<std::string>& lists, const char* option) {
  std::vector<std::string> names = NamesIn(lists, option);
  if (names.empty() && !lists.empty()) {
    throw Failure(kUsageError, fmt::format("{} is empty; name one or more, as in a,b", option));
  }
  return names;
}

[[noreturn]] void RefuseConversion(const tools::ConversionError& error, const std::string& model,
                                   const std::string& ranges) {
  switch (error.Input()) {
    case tools::ConversionInput::kModel:
      throw Failure(kModelError, fmt::format("{}: {}", model, error.what()));
    case tools::ConversionInput::kRanges:
      throw Failure(kModelError, fmt::format("{}: {}", ranges, error.what()));
    case tools::ConversionInput::kNames:
      throw Failure(kUsageError, fmt::format("--names: {}", error.what()));
    case tools::ConversionInput::kLabels:
      throw Failure(kUsageError, fmt::format("--labels: {}", error.what()));
  }
  throw error;
}

}  // namespace

CLI::App* ConvertCommand::AddTo(CLI::App& program) {
  CLI::App* app = program.add_subcommand("convert", "Make a PMML document of a model of LIBSVM");
  AddFileOption(*app, "MODEL", model_, "the file that svm-train of LIBSVM wrote")->required();
  AddFileOption(*app, "--ranges", ranges_,
                "the file that svm-scale -s wrote, where the model was trained on scaled data: the "
                "document takes cases as they were before");
  app->add_option("--names", names_,
                  "names of the features 1, 2, ..., as in a,b,c; x1,x2,... if absent")
      ->allow_extra_args(false);
  app->add_option("--labels", labels_,
                  "names of the classes, in the order of the model's line `label`; for a one-class "
                  "model, of 1 and -1")
      ->allow_extra_args(false);
  AddFileOption(*app, "-o,--output", output_,
                "write the document to this file, which appears when it is complete");
  AddLimitOption(*app, limits_);
  app->footer(
      "Exit status: 0 done; 2 usage; 3 the model or the ranges cannot be read or converted; 6 the "
      "output cannot be\nwritten. docs/convert.md says what the document means.");
  return app;
}

void ConvertCommand::CheckFiles() const {
  const NamedFile output{output_, Stream::kOutput};
  for (const std::string* input : {&model_, &ranges_}) {
    if (input->empty() || !IsSameFile(output, {*input, Stream::kNeither})) continue;
    throw Failure(
        kUsageError,
        fmt::format("the output is the file {}, which is read; name another file", *input));
  }
}

ExitStatus ConvertCommand::Run() {
  CheckFiles();
  tools::LibsvmOptions options;
  options.names = GivenNames(names_, "--names");
  options.labels = GivenNames(labels_, "--labels");
  tools::DocumentSource model(model_, limits_);
  tools::DocumentSource ranges(ranges_, limits_);
  if (!ranges_.empty()) options.ranges = TextOfFile(ranges);
  std::string document;
  try {
    document = tools::LibsvmToPmml(TextOfFile(model), options);
  } catch (const tools::ConversionError& error) {
    RefuseConversion(error, model_, ranges_);
  }
  OutputFile output(output_);
  output.Write(document);
  output.Commit();
  return kDone;
}

}  // namespace svmscore::app
