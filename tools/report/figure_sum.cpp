#include "tools/report/figure_sum.h"

#include <cmath>

namespace svmscore::tools {

void FigureSum::Add(int actual, int predicted, const std::vector<double>& percents) {
  actual_.push_back(actual);
  predicted_.push_back(predicted);
  percents_.insert(percents_.end(), percents.begin(), percents.end());
}

void FigureSum::AddBatch() {
  if (actual_.empty()) return;
  const ClassFigures batch = FiguresOf(actual_, predicted_, percents_, categories_);
  const auto count = static_cast<double>(batch.cases);
  total_.cases += batch.cases;
  total_.accuracy += batch.accuracy * count;
  if (batch.probabilities) {
    if (!total_.probabilities) total_.probabilities.emplace();
    total_.probabilities->brier += batch.probabilities->brier * count;
    total_.probabilities->log_loss += batch.probabilities->log_loss * count;
    for (std::size_t t = 0; t < batch.probabilities->tenths.size(); ++t) {
      const Tenth& from = batch.probabilities->tenths[t];
      Tenth& to = total_.probabilities->tenths[t];
      to.cases += from.cases;
      to.mean += from.mean * static_cast<double>(from.cases);
      to.share += from.share * static_cast<double>(from.cases);
    }
  }
  actual_.clear();
  predicted_.clear();
  percents_.clear();
}

ClassFigures FigureSum::Total() const {
  ClassFigures figures = total_;
  const auto count = static_cast<double>(total_.cases);
  figures.accuracy /= count;
  if (!figures.probabilities) return figures;
  figures.probabilities->brier /= count;
  figures.probabilities->log_loss /= count;
  for (Tenth& tenth : figures.probabilities->tenths) {
    if (tenth.cases == 0) continue;
    figures.probabilities->ece += std::fabs(tenth.share - tenth.mean) / count;
    tenth.mean /= static_cast<double>(tenth.cases);
    tenth.share /= static_cast<double>(tenth.cases);
  }
  return figures;
}

}  // namespace svmscore::tools
