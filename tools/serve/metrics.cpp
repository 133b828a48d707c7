#include "tools/serve/metrics.h"

#include <algorithm>
#include <iterator>

#include <fmt/format.h>

namespace svmscore::serve {
namespace {

void AddHead(std::string& out, std::string_view name, std::string_view type,
             std::string_view help) {
  fmt::format_to(std::back_inserter(out), "# HELP {0} {1}\n# TYPE {0} {2}\n", name, help, type);
}

template <typename... Arguments>
void AddLine(std::string& out, fmt::format_string<Arguments...> format, Arguments&&... arguments) {
  fmt::format_to(std::back_inserter(out), format, std::forward<Arguments>(arguments)...);
  out += '\n';
}

}  // namespace

void Metrics::CountRequest(std::string_view route, unsigned status, double seconds) {
  const auto bound = std::lower_bound(kBounds.begin(), kBounds.end(), seconds);
  const std::lock_guard lock(mutex_);
  auto found = routes_.find(route);
  if (found == routes_.end()) found = routes_.emplace(route, PerRoute()).first;
  PerRoute& counted = found->second;
  ++counted.requests[status];
  ++counted.latency.counts[static_cast<std::size_t>(bound - kBounds.begin())];
  counted.latency.sum += seconds;
}

void Metrics::CountRows(const std::string& model, const RowCounts& rows) {
  const std::lock_guard lock(mutex_);
  RowCounts& counted = rows_[model];
  counted.scored += rows.scored;
  counted.invalid += rows.invalid;
  counted.missing += rows.missing;
}

void Metrics::Forget(const std::string& model) {
  const std::lock_guard lock(mutex_);
  rows_.erase(model);
}

std::string Metrics::Text(const ModelStore& store) {
  std::string out;
  std::vector<std::pair<std::string, StoredModel>> models;
  decltype(routes_) routes;
  decltype(rows_) counted_rows;
  {  // Every answer takes the lock: nothing is written under it.
    const std::lock_guard lock(mutex_);
    models = store.All();
    // Rows may be counted after their model is gone.
    std::erase_if(rows_, [&models](const auto& entry) {
      const auto found = std::lower_bound(
          models.begin(), models.end(), entry.first,
          [](const auto& model, const std::string& id) { return model.first < id; });
      return found == models.end() || found->first != entry.first;
    });
    routes = routes_;
    counted_rows = rows_;
  }
  AddHead(out, "svmscore_http_requests_total", "counter", "Requests answered.");
  for (const auto& [route, counted] : routes) {
    for (const auto& [status, count] : counted.requests) {
      AddLine(out, "svmscore_http_requests_total{{route=\"{}\",code=\"{}\"}} {}", route, status,
              count);
    }
  }
  AddHead(out, "svmscore_http_request_duration_seconds", "histogram",
          "Time from the first byte of a request to the beginning of its answer.");
  for (const auto& [route, counted] : routes) {
    std::uint64_t below = 0;
    for (std::size_t i = 0; i < counted.latency.counts.size(); ++i) {
      below += counted.latency.counts[i];
      AddLine(out, "svmscore_http_request_duration_seconds_bucket{{route=\"{}\",le=\"{}\"}} {}",
              route, i < kBounds.size() ? fmt::format("{}", kBounds.at(i)) : "+Inf", below);
    }
    AddLine(out, "svmscore_http_request_duration_seconds_sum{{route=\"{}\"}} {}", route,
            counted.latency.sum);
    AddLine(out, "svmscore_http_request_duration_seconds_count{{route=\"{}\"}} {}", route, below);
  }
  AddHead(out, "svmscore_rows_total", "counter",
          "Rows scored, by the status that they ended with.");
  for (const auto& [model, rows] : counted_rows) {
    const std::array<std::pair<int, std::uint64_t>, 3> counts = {
        {{0, rows.scored},
         {MCScore::kInvalidValue, rows.invalid},
         {MCScore::kCannotScore, rows.missing}}};
    for (const auto& [status, count] : counts) {
      AddLine(out, "svmscore_rows_total{{model=\"{}\",status=\"{}\"}} {}", model, status, count);
    }
  }
  AddHead(out, "svmscore_model_loads_total", "counter", "Documents that were to become a model.");
  AddLine(out, "svmscore_model_loads_total{{result=\"loaded\"}} {}", loads_.load());
  AddLine(out, "svmscore_model_loads_total{{result=\"failed\"}} {}", failed_loads_.load());
  AddHead(out, "svmscore_model_info", "gauge", "The models that answer, 1 for each.");
  for (const auto& [id, stored] : models) {
    if (stored.model == nullptr) continue;
    AddLine(out, "svmscore_model_info{{model=\"{}\",sha256=\"{}\"}} 1", id, stored.model->Sha256());
  }
  AddHead(out, "svmscore_model_problem", "gauge",
          "Whether the file of a model could not take its place.");
  for (const auto& [id, stored] : models) {
    AddLine(out, "svmscore_model_problem{{model=\"{}\"}} {}", id,
            stored.problem && !stored.is_of_upload ? 1 : 0);
  }
  AddHead(out, "svmscore_connections", "gauge", "Connections that are open.");
  AddLine(out, "svmscore_connections {}", connections_.load());
  AddHead(out, "svmscore_refused_requests_total", "counter",
          "Requests that were turned away because the service was busy.");
  AddLine(out, "svmscore_refused_requests_total {}", refusals_.load());
  return out;
}

}  // namespace svmscore::serve
