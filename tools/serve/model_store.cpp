#include "tools/serve/model_store.h"

namespace svmscore::serve {

std::optional<StoredModel> ModelStore::Find(std::string_view id) const {
  const std::shared_lock lock(mutex_);
  const auto found = models_.find(id);
  return found == models_.end() ? std::nullopt : std::optional(found->second);
}

std::vector<std::pair<std::string, StoredModel>> ModelStore::All() const {
  const std::shared_lock lock(mutex_);
  return {models_.begin(), models_.end()};
}

void ModelStore::Put(std::unique_ptr<ServedModel> model) {
  const std::string id = model->Id();
  // The list has room before a model needs it, so that nothing fails when the last user is done.
  // Where there is no memory for the pointer, it frees the model itself.
  SharedModel shared(model.release(), [retired = retired_](const ServedModel* unused) {
    std::unique_ptr<const ServedModel> owned(unused);
    const std::lock_guard lock(retired->mutex);
    try {
      retired->models.push_back(std::move(owned));
    } catch (const std::bad_alloc&) {  // freed here and now
    }
  });
  const std::unique_lock lock(mutex_);
  StoredModel& stored = models_[id];
  if (stored.model != nullptr) shared->Touch(stored.model->Accessed());
  stored.model.swap(shared);
  stored.problem.reset();
}

void ModelStore::SetProblem(const std::string& id, std::optional<std::string> problem,
                            bool is_of_upload) {
  const std::unique_lock lock(mutex_);
  StoredModel& stored = models_[id];
  stored.problem = std::move(problem);
  stored.is_of_upload = is_of_upload;
}

bool ModelStore::Drop(std::string_view id) {
  const std::unique_lock lock(mutex_);
  const auto found = models_.find(id);
  if (found == models_.end()) return false;
  models_.erase(found);
  return true;
}

void ModelStore::Sweep() {
  std::vector<std::unique_ptr<const ServedModel>> unused;
  {
    const std::lock_guard lock(retired_->mutex);
    unused.swap(retired_->models);
  }
}

}  // namespace svmscore::serve
