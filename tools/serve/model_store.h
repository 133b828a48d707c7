// The models that are served, by their ids.
#ifndef TOOLS_SERVE_MODEL_STORE_H_
#define TOOLS_SERVE_MODEL_STORE_H_

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <shared_mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/serve/served_model.h"

namespace svmscore::serve {

// A model, and what is wrong with the latest document of its id.
struct StoredModel {
  SharedModel model;                   // null where none has loaded yet
  std::optional<std::string> problem;  // why the latest document does not take its place
  bool is_of_upload = false;           // a client sent that document, and its file is fine
};

// A request takes a model and keeps it to its end, whatever happens to the store meanwhile. Models
// that nobody uses any more wait for Sweep, since to free a large one takes longer than an answer.
// [any thread] Fails: std::bad_alloc.
class ModelStore {
 public:
  ModelStore() : retired_(std::make_shared<Retired>()) {}

  // Nothing where there is no such id.
  std::optional<StoredModel> Find(std::string_view id) const;
  std::vector<std::pair<std::string, StoredModel>> All() const;

  // Makes the model the one of its id, without a problem.
  void Put(std::unique_ptr<ServedModel> model);
  // Notes why a document does not become the model of the id; nothing takes the note back.
  void SetProblem(const std::string& id, std::optional<std::string> problem,
                  bool is_of_upload = false);
  // False where there is none.
  bool Drop(std::string_view id);

  // Frees the models that nobody uses any more.
  void Sweep();

 private:
  struct Retired {
    std::mutex mutex;
    std::vector<std::unique_ptr<const ServedModel>> models;
  };

  std::shared_ptr<Retired> retired_;
  mutable std::shared_mutex mutex_;
  std::map<std::string, StoredModel, std::less<>> models_;
};

}  // namespace svmscore::serve

#endif  // TOOLS_SERVE_MODEL_STORE_H_
