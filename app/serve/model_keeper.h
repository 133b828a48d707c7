// Keeps the store in step with the files of its models: the only thread that loads documents.
#ifndef APP_SERVE_MODEL_KEEPER_H_
#define APP_SERVE_MODEL_KEEPER_H_

#include <atomic>
#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "app/serve/access_log.h"
#include "app/serve/folder_watch.h"
#include "tools/serve/exchange.h"
#include "tools/serve/metrics.h"
#include "tools/serve/model_files.h"
#include "tools/serve/model_store.h"
#include "tools/serve/route.h"

namespace svmscore::app {

struct KeeperOptions {
  std::string folder;                        // empty for none
  std::map<std::string, std::string> files;  // of models that the command line names, by ids
  serve::ReadingRules rules;
};

// Lives: the store, the metrics and the log, longer than this.
class ModelKeeper {
 public:
  // Takes an answer, on the keeper's thread.
  using Done = std::function<void(serve::Answer)>;
  // Gives a document, on the keeper's thread. Fails: BadRequest; std::bad_alloc.
  using Document = std::function<std::string()>;

  ModelKeeper(KeeperOptions options, serve::ModelStore& store, serve::Metrics& metrics,
              AccessLog& log);
  ~ModelKeeper();
  ModelKeeper(const ModelKeeper&) = delete;
  ModelKeeper& operator=(const ModelKeeper&) = delete;

  // Loads what the command line names and what the folder has. [one thread] Fails: Failure for a
  // file of the command line that is no model, and for a folder that cannot be read.
  void LoadAll();
  // Watches from now on.
  void Start();
  // Ends after the load at hand; uploads that wait are not answered. What is called back must be
  // there until it returns; nothing is called back later.
  void Stop();

  // PUT and DELETE of a model. False where too many wait. [any thread] Fails: std::bad_alloc.
  bool Change(serve::Route route, serve::Method method, Document document, Done done);

 private:
  struct Task {
    serve::Route route;
    serve::Method method;
    Document document;
    Done done;
  };
  struct Known {
    serve::ModelFile file;
    std::string problem;  // why it could not take its place last
    bool retry = false;   // the system failed, and not the document: it may do better next time
  };

  void Run();
  std::optional<Task> NextTask();
  serve::Answer Put(const serve::Route& route, const Document& document);
  serve::Answer Delete(const serve::Route& route);
  // Loads files that are new or changed, and drops those that are gone. `settled`: whoever wrote
  // them is done.
  void Rescan(bool settled);
  void CheckFolder(bool settled);
  void CheckFiles(bool settled);
  // Serves the file, or notes why not.
  void Load(const std::string& id, Known& known);
  void Swap(const std::string& id, std::string bytes, std::string_view from);
  // Once for the same. `told`: what clients get to know.
  void NoteProblem(const std::string& id, Known& known, const std::string& why,
                   const std::string& told);
  // Makes it the model of its id, and then logs that, and what speaks against its scores.
  void Serve(std::unique_ptr<serve::ServedModel> owned, bool is_new, std::string_view from);
  // Logs files that others of their id hide.
  void NoteHidden(const std::string& id, const serve::ModelFile& file);
  // Logs documents whose names are no ids, each once.
  void NoteNameless(std::set<std::string> paths);

  const KeeperOptions options_;
  serve::ModelStore& store_;
  serve::Metrics& metrics_;
  AccessLog& log_;
  FolderWatch watch_;
  std::map<std::string, Known> folder_;  // by id
  std::map<std::string, Known> files_;
  std::map<std::string, std::string> hidden_;  // what was logged of them, by id
  std::set<std::string> nameless_;             // and of files whose names are no ids
  bool folder_fails_ = false;

  std::mutex mutex_;
  std::deque<Task> tasks_;
  std::atomic<bool> ends_{false};
  std::thread thread_;
};

}  // namespace svmscore::app

#endif  // APP_SERVE_MODEL_KEEPER_H_
