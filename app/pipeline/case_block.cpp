#include "app/pipeline/case_block.h"

#include "host/model/score_status.h"

namespace svmscore::app {

void Tally::Count(long status) {
  ++cases;
  if (status == 0) {
    ++done;
  } else if (status == MCScore::kInvalidValue) {
    ++invalid;
  } else {
    ++missing;
  }
}

void Tally::Add(const Tally& other) {
  cases += other.cases;
  done += other.done;
  missing += other.missing;
  invalid += other.invalid;
}

}  // namespace svmscore::app
