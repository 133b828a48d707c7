#include "tools/verify/verify_json.h"

#include <cmath>

#include <nlohmann/json.hpp>

namespace svmscore::tools {

std::string JsonOf(const VerifyReport& report) {
  using Json = nlohmann::ordered_json;
  Json differences = Json::array();
  for (const Disagreement& difference : report.Differences()) {
    const auto& deviation = difference.judgement.deviation;
    differences.push_back(
        {{"record", difference.record},
         {"column", difference.name},
         {"expected", difference.expected},
         {"got", difference.got ? Json(*difference.got) : Json()},
         {"status", difference.status},
         {"deviation", deviation && std::isfinite(*deviation) ? Json(*deviation) : Json()}});
  }
  const Json all = {{"agrees", report.Disagreements() == 0},
                    {"compared", report.Compared()},
                    {"disagreements", report.Disagreements()},
                    {"remarks", report.Remarks()},
                    {"differences", std::move(differences)}};
  return all.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace svmscore::tools
