#include "app/serve/serve_command.h"

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <utility>

#include <fmt/format.h>

#include "app/options/file_option.h"
#include "app/options/limit_option.h"
#include "app/serve/access_log.h"
#include "app/serve/page.h"
#include "app/serve/server.h"
#include "app/serve/table_scoring.h"
#include "tools/base/error_text.h"
#include "tools/serve/metrics.h"
#include "tools/serve/model_store.h"
#include "tools/serve/request_checks.h"
#include "tools/serve/route.h"
#include "tools/serve/service.h"

namespace svmscore::app {
namespace {

constexpr std::size_t kMebibyte = std::size_t{1} << 20;

// Of "address:port" and "[address]:port".
void ReadAddress(const std::string& text, ServeOptions& options) {
  const std::size_t colon = text.rfind(':');
  const char* const end = text.data() + text.size();
  unsigned short port = 0;
  bool good = colon != std::string::npos && colon > 0;
  if (good) {
    const auto read = std::from_chars(text.data() + colon + 1, end, port);
    good = read.ec == std::errc() && read.ptr == end && colon + 1 < text.size();
  }
  if (!good) {
    throw Failure(kUsageError, fmt::format("--listen: \"{}\" is not an address with a port, as "
                                           "127.0.0.1:8080 is; port 0 picks a free one",
                                           text));
  }
  options.port = port;
  options.address = text.substr(0, colon);
  if (options.address == "localhost") options.address = "127.0.0.1";
  if (options.address.starts_with('[') && options.address.ends_with(']')) {
    options.address = options.address.substr(1, options.address.size() - 2);
  }
}

bool IsLoopback(const std::string& address) {
  return address.starts_with("127.") || address == "::1";
}

// The names under which the service may be called.
void AllowHosts(const std::vector<std::string>& more, ServeOptions& options) {
  const std::string& address = options.address;
  std::vector<std::string>& hosts = options.access.hosts;
  hosts = {"localhost", "127.0.0.1", "[::1]"};
  hosts.push_back(address.find(':') == std::string::npos ? address : "[" + address + "]");
  options.access.any_address = address == "0.0.0.0" || address == "::";
  for (const std::string& given : more) {
    const std::string host = serve::LowerCase(given);
    const bool in_brackets = host.size() > 2 && host.front() == '[' && host.back() == ']';
    if (host.empty() || (!in_brackets && host.find_first_of(":/*@[] ") != std::string::npos)) {
      throw Failure(kUsageError,
                    fmt::format("--allow-host: \"{}\" is no name of a host; give it as in "
                                "scores.example or [::1], without a port",
                                given));
    }
    hosts.push_back(host);
  }
}

// As browsers send them: in lower case, without a path.
std::vector<std::string> Origins(const std::vector<std::string>& given) {
  std::vector<std::string> origins;
  for (const std::string& text : given) {
    const std::string origin = serve::LowerCase(text);
    const std::size_t scheme = origin.find("://");
    if (scheme == 0 || scheme == std::string::npos || scheme + 3 == origin.size() ||
        origin.find_first_of("/*@?# ", scheme + 3) != std::string::npos) {
      throw Failure(kUsageError,
                    fmt::format("--allow-origin: \"{}\" is no origin; give each as in "
                                "https://example.com or http://localhost:3000, without a path or "
                                "a slash at its end",
                                text));
    }
    origins.push_back(origin);
  }
  return origins;
}

std::string ReadToken(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    throw Failure(kUsageError, fmt::format("--upload-token-file: cannot read {}: {}", path,
                                           tools::ErrorText(errno)));
  }
  std::string token;
  std::getline(file, token);
  while (!token.empty() && (token.back() == '\r' || token.back() == ' ')) token.pop_back();
  if (token.empty()) {
    throw Failure(kUsageError,
                  fmt::format("--upload-token-file: {} has no token in its first line", path));
  }
  return token;
}

// "ID=FILE", or a file whose name without its ending is the id.
std::pair<std::string, std::string> ModelOf(const std::string& text) {
  const std::size_t equals = text.find('=');
  std::error_code unknown;
  if (equals != std::string::npos && serve::IsModelId(text.substr(0, equals)) &&
      !std::filesystem::exists(text, unknown)) {
    return {text.substr(0, equals), text.substr(equals + 1)};
  }
  const std::string name = std::filesystem::path(text).filename().string();
  std::string id = serve::IdOfFile(name);
  if (id.empty()) id = std::filesystem::path(name).stem().string();
  if (!serve::IsModelId(id)) {
    throw Failure(kUsageError,
                  fmt::format("\"{}\" cannot be the id of a model: ids are letters, digits, dots, "
                              "hyphens and underscores; name one: ID={}",
                              id, text));
  }
  return {id, text};
}

}  // namespace

CLI::App* ServeCommand::AddTo(CLI::App& program) {
  CLI::App* app = program.add_subcommand("serve", "Score over HTTP, and try models in a browser");
  app->add_option("MODEL", models_,
                  "files of PMML; a model's id is its file's name without the ending, or ID in "
                  "ID=FILE");
  app->add_option("--listen", listen_, "address and port; port 0 picks a free one and prints it")
      ->type_name("ADDRESS:PORT")
      ->capture_default_str();
  AddFileOption(*app, "--models", folder_,
                "serve every .pmml and .xml file of this folder, as they come, change and go");
  app->add_flag("--allow-upload", allow_upload_,
                "let clients put models into the folder of --models, and delete them");
  AddFileOption(*app, "--upload-token-file", token_file_,
                "who changes models must send the first line of this file as a bearer token");
  app->add_option("--allow-host", hosts_,
                  "answer requests for this host, too; repeatable; default: the address of "
                  "--listen and localhost")
      ->allow_extra_args(false);
  app->add_option("--allow-origin", origins_,
                  "let pages of this origin, such as https://example.com, read answers; repeatable")
      ->allow_extra_args(false);
  app->add_option("--log", log_, "requests: a line for each; events: only for models and errors")
      ->check(CLI::IsMember({"requests", "events"}))
      ->capture_default_str();
  AddLimits(*app);
  AddReadingOptions(*app, reading_,
                    "refuse a model of whose document something is guessed, lost or wrong");
  AddLimitOption(*app, limits_);
  AddFileOption(*app, "--plugin", plugin_, kPluginHelp);
  return app;
}

void ServeCommand::AddLimits(CLI::App& app) {
  const auto number = [&app](const char* name, auto& value, std::size_t most, const char* help) {
    app.add_option(name, value, help)
        ->check(CLI::Range(std::size_t{1}, most))
        ->type_name("N")
        ->capture_default_str();
  };
  app.add_option("--threads", options_.threads,
                 "threads that score what takes longer; default: all cores")
      ->check(CLI::Range(1, 1024))
      ->type_name("N");
  number("--max-body", body_mib_, 1024, "MiB of a request's body, inflated");
  number("--max-answer", answer_mib_, 4096, "MiB of the scores of a request");
  number("--max-upload", upload_mib_, 1024, "MiB of an uploaded document");
  number("--max-rows", options_.most_rows, 100000000, "rows of a request");
  number("--max-header", options_.most_head, 1000000, "bytes of a request's line and headers");
  number("--max-connections", options_.most_connections, 100000, "connections at a time");
  number("--max-waiting", options_.most_waiting, 100000,
         "requests that wait for a thread; further ones get 503");
  number("--read-seconds", options_.read_seconds, 86400,
         "a request must arrive in this time from its first byte to its last");
  number("--idle-seconds", options_.idle_seconds, 86400,
         "a connection without a request is closed after this time");
  number("--drain-seconds", options_.drain_seconds, 86400,
         "after SIGTERM, requests that run may take this time");
}

KeeperOptions ServeCommand::Keeper() const {
  KeeperOptions keeper;
  keeper.folder = folder_;
  keeper.rules = {ChecksOf(reading_), limits_, plugin_};
  for (const std::string& text : models_) {
    const auto [id, path] = ModelOf(text);
    if (!keeper.files.emplace(id, path).second) {
      throw Failure(kUsageError,
                    fmt::format("two models have the id {}; name another: ID={}", id, path));
    }
  }
  return keeper;
}

ServeOptions ServeCommand::Serving() const {
  ServeOptions options = options_;
  ReadAddress(listen_, options);
  AllowHosts(hosts_, options);
  options.access.origins = Origins(origins_);
  options.access.allow_upload = allow_upload_;
  if (!token_file_.empty()) options.access.upload_token = ReadToken(token_file_);
  options.most_body = body_mib_ * kMebibyte;
  options.most_answer = answer_mib_ * kMebibyte;
  options.most_upload = upload_mib_ * kMebibyte;
  options.most_bodies = 2 * std::max(options.most_body, options.most_upload);
  options.most_answers = 2 * options.most_answer;
  options.logs_requests = log_ == "requests";
  return options;
}

ExitStatus ServeCommand::Run() {
  if (allow_upload_ && folder_.empty()) {
    throw Failure(kUsageError, "--allow-upload needs --models, the folder that keeps the models");
  }
  if (!allow_upload_ && !token_file_.empty()) {
    throw Failure(kUsageError,
                  "--upload-token-file needs --allow-upload, without which no upload is taken");
  }
  if (models_.empty() && folder_.empty()) {
    throw Failure(kUsageError, "there is nothing to serve: name models, or a folder with --models");
  }
  const ServeOptions options = Serving();
  AccessLog log;
  serve::ModelStore store;
  serve::Metrics metrics;
  ModelKeeper keeper(Keeper(), store, metrics, log);
  const TableBounds bounds{options.most_rows, options.most_body, options.most_answer, limits_};
  const Page page = MakePage(PageFiles());
  serve::Service service(
      store, metrics,
      {{options.most_rows, options.most_answer},
       [&bounds](const serve::ServedModel& model, std::string& table, const serve::Route& route,
                 serve::RowCounts& rows) { return ScoreTable(model, table, route, bounds, rows); },
       page.html,
       page.content_security_policy});
  Server server({options, service, metrics, keeper, log});
  if (allow_upload_ && token_file_.empty() && !IsLoopback(options.address)) {
    log.Event(
        "warning", {},
        "whoever reaches the address can change models; --upload-token-file asks for a token");
  }
  const std::string host = options.address.find(':') == std::string::npos
                               ? options.address
                               : "[" + options.address + "]";
  const std::string line =
      fmt::format("svmscore: listening on http://{}:{}\n", host, server.Port());
  const auto load = [&keeper] {
    keeper.LoadAll();
    keeper.Start();
  };
  const auto ready = [&line] {
    std::fputs(line.c_str(), stdout);
    std::fflush(stdout);
  };
  try {
    server.Run(load, ready);
  } catch (...) {
    keeper.Stop();
    throw;
  }
  keeper.Stop();
  return kDone;
}

}  // namespace svmscore::app
