// What the service counts, in the text format of Prometheus.
#ifndef TOOLS_SERVE_METRICS_H_
#define TOOLS_SERVE_METRICS_H_

#include <array>
#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

#include "tools/serve/model_store.h"
#include "tools/serve/row_run.h"

namespace svmscore::serve {

// [any thread] Fails: std::bad_alloc.
class Metrics {
 public:
  // A request that has been answered. `route` is Route::Name(): the names of what clients make up
  // are never labels, and there are only as many models as were loaded.
  void CountRequest(std::string_view route, unsigned status, double seconds);
  void CountRows(const std::string& model, const RowCounts& rows);
  void CountLoad(bool loaded) { ++(loaded ? loads_ : failed_loads_); }
  // The model is gone: its rows are no longer told.
  void Forget(const std::string& model);
  void CountConnection(int change) { connections_ += change; }
  std::int64_t Connections() const { return connections_; }
  // A request that was turned away for lack of room.
  void CountRefusal() { ++refusals_; }

  // Rows of models that are no longer there are forgotten.
  std::string Text(const ModelStore& store);

 private:
  // Upper bounds in seconds; beyond the last one there is +Inf.
  static constexpr std::array<double, 14> kBounds = {
      0.0001, 0.00025, 0.0005, 0.001, 0.0025, 0.005, 0.01, 0.025, 0.05, 0.1, 0.25, 0.5, 1.0, 5.0};
  struct Latency {
    std::array<std::uint64_t, kBounds.size() + 1> counts{};
    double sum = 0.0;
  };
  struct PerRoute {
    std::map<unsigned, std::uint64_t> requests;  // by status
    Latency latency;
  };

  mutable std::mutex mutex_;
  std::map<std::string, PerRoute, std::less<>> routes_;
  std::map<std::string, RowCounts> rows_;
  std::atomic<std::uint64_t> loads_{0};
  std::atomic<std::uint64_t> failed_loads_{0};
  std::atomic<std::uint64_t> refusals_{0};
  std::atomic<std::int64_t> connections_{0};
};

}  // namespace svmscore::serve

#endif  // TOOLS_SERVE_METRICS_H_
