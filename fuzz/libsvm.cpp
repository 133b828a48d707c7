// Any bytes as a model of LIBSVM, and after a zero byte as ranges, made into a document that is
// then loaded.
#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/checked_scoring.h"
#include "fuzz/promise.h"
#include "fuzz/time_limit.h"
#include "host/load/loader.h"
#include "host/model/ss_exception.h"
#include "tools/convert/libsvm_document.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  svmscore::fuzz::ThePlugin();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace svmscore;
  const fuzz::TimeLimit limit;
  // A feature of a large number makes a large document of a small model.
  constexpr std::size_t kLoaded = std::size_t{1} << 20U;
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const std::string_view model = bytes.substr(0, bytes.find('\0'));
  tools::LibsvmOptions options;
  if (model.size() < size) options.ranges = bytes.substr(model.size() + 1);
  try {
    const std::string document = tools::LibsvmToPmml(model, options);
    if (document.size() > kLoaded) return 0;
    LoadModel(fuzz::ThePlugin(), PmmlDocument::FromText(document, "model.pmml"));
  } catch (const tools::ConversionError& error) {
    fuzz::Promise(!error.Sentence().empty() && !error.Remedy().empty(), "a refusal says why");
  } catch (const MCZandor_850::SSException& error) {
    fuzz::Promise(false, std::string("a document that was made can be loaded: ") + error.what());
  }
  return 0;
}
