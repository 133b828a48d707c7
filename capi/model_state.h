// A loaded model as handles share it, and what is known of it.
#ifndef CAPI_MODEL_STATE_H_
#define CAPI_MODEL_STATE_H_

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "capi/svmscore.h"
#include "host/load/loader.h"
#include "host/model/batch_model.h"

namespace svmscore::capi {

// Texts that a struct of the interface points at.
class TextList {
 public:
  // Fails: std::bad_alloc.
  void Add(std::string text) { texts_.push_back(std::move(text)); }
  // After the last Add.
  void Finish();
  const svmscore_text* data() const { return views_.data(); }
  std::size_t size() const { return views_.size(); }
  const svmscore_text& operator[](std::size_t i) const { return views_[i]; }

 private:
  std::vector<std::string> texts_;
  std::vector<svmscore_text> views_;
};

struct InputFacts {
  std::string name;
  std::string type;
  std::string op_type;
  int role = SVMSCORE_NEEDED;
  std::optional<std::string> replacement;
  TextList categories;
};

// Set up while it is loaded; afterwards only read, on any number of threads.
struct ModelState {
  explicit ModelState(LoadedModel from) : loaded(std::move(from)) {}

  LoadedModel loaded;
  BatchModel* batch = nullptr;  // the model, where it takes batches
  bool replaces_missing = false;
  // Every variable that a case may have a value of: first those of records (tools::InputsOf), then
  // those that output fields read beside them.
  std::vector<const MCZandor_850::ScoreDictVar*> inputs;
  std::size_t record_inputs = 0;  // so many of them are of records
  // Of each entry of a case the position of its input, where every entry is an input's number as it
  // is; else empty.
  std::vector<std::size_t> plain_entries;

  std::string sha256;
  std::string target_name;
  std::string target_type;
  TextList categories;
  TextList remarks;
  std::vector<InputFacts> input_facts;
  // By DocumentLock.
  mutable std::mutex document_mutex;
};

using SharedModel = std::shared_ptr<const ModelState>;

// How the caller wants documents to be read.
struct LoadSettings {
  svmscore_load_options options{};
  Limits limits;
  std::string plugin_path;
  std::string name;
};
// Throws a Refusal. `options` may be null.
LoadSettings ReadSettings(const svmscore_load_options* options);
// A path of the caller's. Throws a Refusal for one that holds a NUL or is empty.
std::string ReadPath(const char* path, std::size_t length);

}  // namespace svmscore::capi

struct svmscore_model {
  svmscore::capi::SharedModel state;
};

#endif  // CAPI_MODEL_STATE_H_
