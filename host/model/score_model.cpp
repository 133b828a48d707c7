#include "host/model/score_model.h"

#include "host/model/batch_model.h"
#include "host/model/explainable_model.h"

namespace MCZandor_850 {

ScoreModel::~ScoreModel() = default;

ScoreVersionInfo::~ScoreVersionInfo() = default;

VersionInfo::VersionInfo(const std::string& version) : version_(version) {}
VersionInfo::~VersionInfo() = default;

}  // namespace MCZandor_850

svmscore::BatchModel::~BatchModel() = default;

svmscore::Explainer::~Explainer() = default;

svmscore::ExplainableModel::~ExplainableModel() = default;

svmscore::VoteLevels svmscore::BatchModel::Votes() const {
  return {};
}
