#include "app/serve/model_keeper.h"

#include <algorithm>
#include <exception>
#include <string_view>
#include <utility>

#include <sys/resource.h>
#include <unistd.h>

#include <fmt/format.h>

#include "app/base/failure.h"
#include "tools/base/sha256.h"
#include "tools/serve/case_requests.h"
#include "tools/serve/model_answers.h"
#include "tools/serve/request_checks.h"

namespace svmscore::app {
namespace {

using serve::Answer;
using serve::FileFault;
using serve::Method;
using serve::ModelRefused;
using serve::Route;
using serve::ServedModel;

constexpr std::size_t kMostTasks = 16;
constexpr int kRescan = 1000;  // milliseconds
// A file that was changed no later than so long ago may still be written to.
constexpr std::int64_t kSettling = 1000;  // milliseconds

constexpr const char* kUnexpected = "it cannot be loaded; the log says why";
constexpr const char* kUnreadable = "its file cannot be read; the log says why";

// Without what is in the document: clients may ask what is wrong with a file that is none of
// theirs.
std::string ShortText(std::string_view why) {
  const std::size_t end = std::min({why.find(": "), why.find('"'), why.find(" '"), why.size()});
  return fmt::format("{}; the log says more", why.substr(0, end));
}

// Of the exception at hand, one that no document is known to cause. Where its memory runs out, the
// parser throws what is none of the standard's.
std::string UnexpectedText() {
  try {
    throw;
  } catch (const std::exception& error) {
    return error.what();
  } catch (...) {
    return "out of memory";
  }
}

// Lets other threads go first.
void BeNice() {
  setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), 10);
}

bool IsSettled(const serve::FileMark& mark) {
  const std::int64_t age = serve::Now() - mark.modified / 1000000;
  return age < 0 || age > kSettling;
}

}  // namespace

ModelKeeper::ModelKeeper(KeeperOptions options, serve::ModelStore& store, serve::Metrics& metrics,
                         AccessLog& log)
    : options_(std::move(options)),
      store_(store),
      metrics_(metrics),
      log_(log),
      watch_(options_.folder) {}

ModelKeeper::~ModelKeeper() {
  Stop();
}

void ModelKeeper::Stop() {
  ends_ = true;
  watch_.Wake();
  if (thread_.joinable()) thread_.join();
  std::deque<Task> unanswered;
  const std::lock_guard lock(mutex_);
  unanswered.swap(tasks_);
}

void ModelKeeper::LoadAll() {
  for (const auto& [id, path] : options_.files) {
    try {
      const serve::ModelFile file{path, serve::MarkOf(path)};
      Swap(id, serve::ReadFile(path, options_.rules.limits.document_size), path);
      files_[id] = {file, {}, false};
    } catch (const FileFault& fault) {
      throw Failure(kModelError, fault.what());
    } catch (const ModelRefused& refused) {
      throw Failure(kModelError, fmt::format("{}: {}", path, refused.what()));
    }
  }
  if (options_.folder.empty()) return;
  try {
    serve::RemoveUnfinished(options_.folder);
    serve::FilesIn(options_.folder);
  } catch (const FileFault& fault) {
    throw Failure(kModelError, fault.what());
  }
  Rescan(true);
}

void ModelKeeper::Start() {
  thread_ = std::thread([this] { Run(); });
}

void ModelKeeper::Run() {
  BeNice();
  bool changed = true;
  while (!ends_) {
    try {
      while (std::optional<Task> task = NextTask()) {
        Answer answer =
            task->method == Method::kPut ? Put(task->route, task->document) : Delete(task->route);
        task->done(std::move(answer));
        if (ends_) return;
      }
      Rescan(changed);
      store_.Sweep();
    } catch (const std::exception& error) {
      log_.Event("error", {}, error.what());
    }
    changed = watch_.Wait(kRescan);
  }
}

bool ModelKeeper::Change(Route route, Method method, Document document, Done done) {
  {
    const std::lock_guard lock(mutex_);
    if (ends_ || tasks_.size() == kMostTasks) return false;
    tasks_.push_back({std::move(route), method, std::move(document), std::move(done)});
  }
  watch_.Wake();
  return true;
}

std::optional<ModelKeeper::Task> ModelKeeper::NextTask() {
  const std::lock_guard lock(mutex_);
  if (tasks_.empty()) return std::nullopt;
  Task task = std::move(tasks_.front());
  tasks_.pop_front();
  return task;
}

Answer ModelKeeper::Put(const Route& route, const Document& document) {
  const std::string& id = route.id;
  if (files_.contains(id)) {
    return serve::ErrorAnswer(route, 409, "the command line names this model; change its file");
  }
  const std::optional<serve::StoredModel> stored = store_.Find(id);
  const bool is_new = !stored || stored->model == nullptr;
  try {
    auto model = std::make_unique<ServedModel>(id, document(), options_.rules);
    const serve::ModelFile file = serve::StoreFile(options_.folder, id, model->File());
    for (const std::string& path : serve::FilesOf(options_.folder, id)) {
      if (path != file.path) serve::RemoveFile(options_.folder, path);
    }
    folder_[id] = {file, {}, false};
    metrics_.CountLoad(true);
    Serve(std::move(model), is_new, "uploaded");
  } catch (const serve::BadRequest& error) {
    return serve::ErrorAnswer(route, error.Status(), error.what());
  } catch (const ModelRefused& refused) {
    metrics_.CountLoad(false);
    log_.Event("refused", id, refused.what());
    // What is wrong with the file itself is not forgotten for it.
    if (stored && (!stored->problem || stored->is_of_upload)) {
      store_.SetProblem(id, fmt::format("an uploaded document was refused: {}", refused.what()),
                        true);
    }
    return serve::ErrorAnswer(route, 400, refused.what());
  } catch (const FileFault& fault) {
    log_.Event("error", id, fault.what());
    return serve::ErrorAnswer(route, 500, "the document cannot be stored; the log says why");
  } catch (const std::bad_alloc&) {
    return serve::ErrorAnswer(route, 503, "out of memory");
  } catch (...) {  // its sender waits, and so do others
    log_.Event("error", id, UnexpectedText());
    return serve::ErrorAnswer(route, 500, kUnexpected);
  }
  const std::optional<serve::StoredModel> now = store_.Find(id);
  Answer answer;
  answer.status = is_new ? 201 : 200;
  answer.body = serve::UploadedModelText(*now->model);
  answer.model_id = id;
  answer.sha256 = now->model->Sha256();
  if (is_new) answer.headers.emplace_back("Location", "/model/" + id);
  return answer;
}

Answer ModelKeeper::Delete(const Route& route) {
  const std::string& id = route.id;
  if (files_.contains(id)) {
    return serve::ErrorAnswer(route, 409, "the command line names this model; end the service");
  }
  const auto known = folder_.find(id);
  if (known == folder_.end()) {
    return serve::ErrorAnswer(route, 404, fmt::format("there is no model \"{}\"", id));
  }
  try {
    // The one that is served last: where a file cannot be removed, nothing else takes its place.
    std::vector<std::string> paths = serve::FilesOf(options_.folder, id);
    std::reverse(paths.begin(), paths.end());
    for (const std::string& path : paths) serve::RemoveFile(options_.folder, path);
  } catch (const FileFault& fault) {
    log_.Event("error", id, fault.what());
    return serve::ErrorAnswer(route, 500, "the document cannot be removed; the log says why");
  }
  folder_.erase(known);
  store_.Drop(id);
  metrics_.Forget(id);
  log_.Event("dropped", id, "deleted");
  Answer answer;
  answer.body = "{}\n";
  answer.model_id = id;
  return answer;
}

void ModelKeeper::Rescan(bool settled) {
  CheckFiles(settled);
  if (!options_.folder.empty()) CheckFolder(settled);
}

void ModelKeeper::CheckFolder(bool settled) {
  std::map<std::string, serve::ModelFile> found;
  try {
    std::set<std::string> nameless;
    found = serve::FilesIn(options_.folder, &nameless);
    NoteNameless(std::move(nameless));
    folder_fails_ = false;
  } catch (const FileFault& fault) {  // what is served stays
    if (!std::exchange(folder_fails_, true)) log_.Event("error", {}, fault.what());
    return;
  }
  for (auto known = folder_.begin(); known != folder_.end();) {
    if (found.contains(known->first)) {
      ++known;
      continue;
    }
    store_.Drop(known->first);
    metrics_.Forget(known->first);
    log_.Event("dropped", known->first, "its file is gone");
    known = folder_.erase(known);
  }
  for (const auto& [id, file] : found) {
    NoteHidden(id, file);
    if (files_.contains(id)) continue;  // the command line's is served
    const auto known = folder_.find(id);
    const bool same = known != folder_.end() && known->second.file.mark == file.mark &&
                      known->second.file.path == file.path && !known->second.retry;
    if (same || (!settled && !IsSettled(file.mark))) continue;
    Known& loaded = folder_[id];
    loaded.file = file;
    Load(id, loaded);
    if (ends_) return;
  }
}

void ModelKeeper::CheckFiles(bool settled) {
  for (auto& [id, known] : files_) {
    try {
      const serve::FileMark mark = serve::MarkOf(known.file.path);
      if ((mark == known.file.mark && !known.retry) || (!settled && !IsSettled(mark))) continue;
      known.file.mark = mark;
    } catch (const FileFault& fault) {
      known.file.mark = {};
      NoteProblem(id, known, fault.what(), kUnreadable);
      continue;
    }
    Load(id, known);
  }
}

void ModelKeeper::Load(const std::string& id, Known& known) {
  const std::string& path = known.file.path;
  known.retry = true;
  try {
    Swap(id, serve::ReadFile(path, options_.rules.limits.document_size), path);
    known.retry = false;
    known.problem.clear();
  } catch (const FileFault& fault) {
    NoteProblem(id, known, fault.what(), kUnreadable);
  } catch (const ModelRefused& refused) {
    known.retry = false;
    known.problem.clear();  // a new document, if perhaps with the fault of the last
    NoteProblem(id, known, refused.what(), ShortText(refused.what()));
  } catch (const std::bad_alloc&) {
    NoteProblem(id, known, "out of memory", "out of memory");
  } catch (...) {  // the models after it are loaded all the same
    known.retry = false;
    NoteProblem(id, known, UnexpectedText(), kUnexpected);
  }
}

void ModelKeeper::Swap(const std::string& id, std::string bytes, std::string_view from) {
  tools::Sha256 digest;
  digest.Add(bytes.data(), bytes.size());
  const std::string sha256 = digest.Hex();
  const std::optional<serve::StoredModel> stored = store_.Find(id);
  if (stored && stored->model != nullptr && stored->model->Sha256() == sha256) {
    store_.SetProblem(id, std::nullopt);
    return;
  }
  auto model = std::make_unique<ServedModel>(id, std::move(bytes), options_.rules);
  metrics_.CountLoad(true);
  Serve(std::move(model), !stored || stored->model == nullptr, from);
}

void ModelKeeper::Serve(std::unique_ptr<ServedModel> owned, bool is_new, std::string_view from) {
  const ServedModel& model = *owned;  // no other thread takes it from the store
  store_.Put(std::move(owned));
  log_.Event(is_new ? "loaded" : "swapped", model.Id(),
             fmt::format("{}, SHA-256 {}", from, model.Sha256()));
  if (model.Doubt().empty()) return;
  log_.Event("warning", model.Id(),
             fmt::format("the document has findings that change scores, first {}; svmscore doctor "
                         "tells all, and what to do",
                         model.Doubt()));
}

void ModelKeeper::NoteProblem(const std::string& id, Known& known, const std::string& why,
                              const std::string& told) {
  if (known.problem == why) return;
  known.problem = why;
  metrics_.CountLoad(false);
  store_.SetProblem(id, told);
  log_.Event("refused", id, why);
}

void ModelKeeper::NoteHidden(const std::string& id, const serve::ModelFile& file) {
  std::string hidden;
  if (files_.contains(id)) {
    hidden = fmt::format("{} is not served: the command line names this model", file.path);
  } else if (file.others > 0) {
    hidden = fmt::format("{} is served, and {} more of this id in the folder are not", file.path,
                         file.others);
  }
  const auto known = hidden_.find(id);
  if (hidden.empty()) {
    if (known != hidden_.end()) hidden_.erase(known);
    return;
  }
  if (std::exchange(hidden_[id], hidden) != hidden) log_.Event("warning", id, hidden);
}

void ModelKeeper::NoteNameless(std::set<std::string> paths) {
  for (const std::string& path : paths) {
    if (nameless_.contains(path)) continue;
    log_.Event("warning", {},
               path +
                   " is not served: rename it, with letters, digits, dots, hyphens and "
                   "underscores alone before its ending");
  }
  nameless_ = std::move(paths);
}

}  // namespace svmscore::app
