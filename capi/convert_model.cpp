// Making a document of a model of another program.
#include <string>
#include <vector>

#include "capi/call_error.h"
#include "capi/caller_structs.h"
#include "capi/given_text.h"
#include "tools/convert/libsvm_document.h"

namespace svmscore::capi {
namespace {

std::vector<std::string> NamesGiven(const svmscore_text* names, std::size_t count,
                                    const char* place) {
  if (count > 0) Require(names, place);
  std::vector<std::string> read;
  for (std::size_t i = 0; i < count; ++i) read.emplace_back(ViewOf(names[i]));
  return read;
}

[[noreturn]] void RefuseConversion(const tools::ConversionError& error) {
  const bool ranges = error.Input() == tools::ConversionInput::kRanges;
  std::string place = ranges ? "ranges" : "";
  if (error.Line() > 0) {
    place += (ranges ? ", line " : "line ") + std::to_string(error.Line());
  }
  switch (error.Input()) {
    case tools::ConversionInput::kNames:
      RefuseArgument(error.Sentence(), "options.names", error.Remedy());
    case tools::ConversionInput::kLabels:
      RefuseArgument(error.Sentence(), "options.labels", error.Remedy());
    case tools::ConversionInput::kModel:
    case tools::ConversionInput::kRanges:
      break;
  }
  throw Refusal(SVMSCORE_DOCUMENT, error.Sentence(), place, error.Remedy());
}

std::string Convert(std::string_view model, const svmscore_convert_options* given) {
  const svmscore_convert_options options = Read(given, "options");
  tools::LibsvmOptions read;
  if (options.ranges != nullptr) read.ranges = ViewOf(options.ranges, options.ranges_length);
  read.names = NamesGiven(options.names, options.name_count, "options.names");
  read.labels = NamesGiven(options.labels, options.label_count, "options.labels");
  try {
    return tools::LibsvmToPmml(model, read);
  } catch (const tools::ConversionError& error) {
    RefuseConversion(error);
  }
}

}  // namespace
}  // namespace svmscore::capi

int svmscore_convert_libsvm(const void* model, size_t model_size,
                            const svmscore_convert_options* options, char** document,
                            size_t* length, svmscore_error** error) {
  using namespace svmscore::capi;
  return Guarded(error, [&] {
    Require(model, "model");
    Require(document, "document");
    Give(Convert(ViewOf(static_cast<const char*>(model), model_size), options), document, length);
  });
}
