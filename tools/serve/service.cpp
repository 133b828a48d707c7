#include "tools/serve/service.h"

#include <algorithm>
#include <new>
#include <optional>

#include <fmt/format.h>

#include "tools/serve/answer_text.h"
#include "tools/serve/explanation.h"
#include "tools/serve/inference.h"
#include "tools/serve/model_answers.h"
#include "tools/serve/request_checks.h"

namespace svmscore::serve {
namespace {

constexpr std::size_t kQuickBody = 8192;
// So many multiplications take some ten microseconds.
constexpr std::size_t kQuickCost = 200000;
// What reading and writing a row takes at least, in multiplications.
constexpr std::size_t kRowCost = 3000;

// For storing: a document may hold anything, scripts too. The answer shares the model's bytes.
void GiveDocument(const std::shared_ptr<const ServedModel>& model, Answer& answer) {
  const std::string& file = model->File();
  const bool gzip = file.starts_with("\x1f\x8b");
  const bool zstd = file.starts_with("\x28\xb5\x2f\xfd");
  answer.shared = std::shared_ptr<const std::string>(model, &file);
  answer.content_type = gzip ? "application/gzip" : zstd ? "application/zstd" : "application/xml";
  answer.headers.emplace_back("Content-Disposition",
                              fmt::format("attachment; filename=\"{}.pmml{}\"", model->Id(),
                                          gzip   ? ".gz"
                                          : zstd ? ".zst"
                                                 : ""));
}

Answer JsonAnswer(std::string body) {
  Answer answer;
  answer.body = std::move(body);
  return answer;
}

}  // namespace

bool Service::IsQuick(const Route& route, Method method, std::string_view body) const {
  if (method != Method::kPost) {
    return route.resource != Resource::kModels && route.resource != Resource::kModel &&
           route.resource != Resource::kPmml;
  }
  if (body.size() > kQuickBody || route.resource == Resource::kCsv ||
      route.resource == Resource::kExplain) {
    return false;
  }
  const std::optional<StoredModel> stored = store_.Find(route.id);
  if (!stored || stored->model == nullptr) return true;
  // Whatever the rows are, there are commas between them.
  const auto commas = static_cast<std::size_t>(std::count(body.begin(), body.end(), ','));
  const std::size_t rows = route.resource == Resource::kModel ? 1 : 1 + commas;
  return rows * std::max(stored->model->Cost(), kRowCost) <= kQuickCost;
}

Answer Service::Handle(const Route& route, Method method, std::string& body) const noexcept try {
  try {
    return Answered(route, method, body);
  } catch (const BadRequest& error) {
    return ErrorAnswer(route, error.Status(), error.what());
  } catch (const std::bad_alloc&) {
    return ErrorAnswer(route, 503, "out of memory");
  } catch (const std::exception& error) {
    return ErrorAnswer(route, 500, error.what());
  }
} catch (...) {  // not even an error can be told
  Answer answer;
  answer.status = 503;
  return answer;
}

Answer Service::Answered(const Route& route, Method method, std::string& body) const {
  switch (route.resource) {
    case Resource::kMetrics: {
      Answer answer = JsonAnswer(metrics_.Text(store_));
      answer.content_type = "text/plain; version=0.0.4; charset=utf-8";
      return answer;
    }
    case Resource::kModels:
      return JsonAnswer(ModelList(store_));
    case Resource::kServer:
      return JsonAnswer("{\"name\":\"svmscore\",\"version\":\"" SVMSCORE_VERSION
                        "\",\"extensions\":[]}\n");
    case Resource::kLive:
      return JsonAnswer("{\"live\":true}\n");
    case Resource::kReady: {
      Answer answer = JsonAnswer(ready_ ? "{\"ready\":true}\n" : "{\"ready\":false}\n");
      if (!ready_) answer.status = 503;
      return answer;
    }
    case Resource::kPage:
      return PageAnswer(route);
    case Resource::kUnknown:
      return ErrorAnswer(route, 404, kNoSuchPath);
    default:
      return WithModel(route, method, body);
  }
}

Answer Service::PageAnswer(const Route& route) const {
  if (parts_.page.empty()) return ErrorAnswer(route, 404, "there is no page");
  Answer answer;
  answer.body = parts_.page;
  answer.content_type = "text/html; charset=utf-8";
  answer.headers.emplace_back("Content-Security-Policy", parts_.page_policy);
  answer.headers.emplace_back("Referrer-Policy", "no-referrer");
  answer.headers.emplace_back("Cache-Control", "no-cache");
  return answer;
}

void Service::AddModel(Answer& answer) const {
  if (answer.model_id.empty() || !answer.sha256.empty()) return;
  if (answer.status == 401 || answer.status == 403) return;
  const std::optional<StoredModel> stored = store_.Find(answer.model_id);
  if (stored && stored->model != nullptr) answer.sha256 = stored->model->Sha256();
}

Answer Service::WithModel(const Route& route, Method method, std::string& body) const {
  const std::optional<StoredModel> stored = store_.Find(route.id);
  if (!stored && !ready_) return ErrorAnswer(route, 503, "the models are being loaded");
  if (!stored) {
    return ErrorAnswer(route, 404, fmt::format("there is no model \"{}\"", route.id));
  }
  if (route.resource == Resource::kModel && method != Method::kPost) {
    Answer answer = JsonAnswer(ModelSummaryText(route.id, *stored, true) + "\n");
    answer.model_id = route.id;
    if (stored->model != nullptr) answer.sha256 = stored->model->Sha256();
    return answer;
  }
  if (stored->model == nullptr) {
    return ErrorAnswer(route, 503,
                       fmt::format("the model \"{}\" is not ready: {}", route.id,
                                   stored->problem.value_or("it is being loaded")));
  }
  const ServedModel& model = *stored->model;
  Answer answer;
  answer.model_id = route.id;
  answer.sha256 = model.Sha256();
  if (route.resource == Resource::kPmml) {
    GiveDocument(stored->model, answer);
    return answer;
  }
  try {
    Score(route, model, body, answer);
  } catch (const BadRequest& error) {
    answer.status = error.Status();
    answer.body = ErrorBody(error.what(), route.protocol);
    answer.content_type = "application/json";
  }
  return answer;
}

void Service::Score(const Route& route, const ServedModel& model, std::string& body,
                    Answer& answer) const {
  switch (route.resource) {
    case Resource::kInferenceModel:
      answer.body = InferenceMetadata(model);
      return;
    case Resource::kInferenceReady:
      answer.body = "{\"name\":\"" + model.Id() + "\",\"ready\":true}\n";
      return;
    case Resource::kModel:
      answer.body = ScoreOne(model, body, answer.rows);
      break;
    case Resource::kBatch:
      answer.body = ScoreMany(model, body, parts_.bounds, answer.rows);
      break;
    case Resource::kExplain:
      answer.body = ExplainOne(model, body, answer.rows);
      break;
    case Resource::kInfer:
      answer.body = Infer(model, body, parts_.bounds, answer.rows);
      break;
    default:
      answer.body = parts_.tables(model, body, route, answer.rows);
      answer.content_type = "text/csv; charset=utf-8";
      break;
  }
  model.Touch(Now());
  metrics_.CountRows(model.Id(), answer.rows);
}

}  // namespace svmscore::serve
