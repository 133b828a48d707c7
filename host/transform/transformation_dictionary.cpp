#include "host/transform/transformation_dictionary.h"

#include <array>
#include <atomic>
#include <functional>
#include <thread>
#include <utility>

#include "host/transform/derived_fields.h"

namespace MCZandor_850 {

using svmscore::transform::Program;
using svmscore::transform::Scratch;

TransformVar::TransformVar(std::string name, svmscore::OpType op_type, svmscore::FieldType type,
                           std::string source)
    : ScoreDictVar(std::move(name), op_type, type), source_(std::move(source)) {
  MarkDerived();
}

TransformVar::~TransformVar() = default;

void TransformVar::AddEncodedValue(std::unique_ptr<ScoreValue> value) {
  encoded_.push_back(std::move(value));
  encoded_views_.push_back(encoded_.back().get());
}

// Scratch records that no case is using. Each thread starts looking at a place given by its own
// identity, so that threads seldom collide, and no lock is taken.
class TransformationDictionary::Store {
 public:
  ~Store() {
    for (Place& place : places_) delete place.scratch.load();
  }

  // Null where none is found.
  std::unique_ptr<Scratch> Take() {
    for (std::size_t i = 0; i < kTries; ++i) {
      std::atomic<Scratch*>& scratch = places_[(Home() + i) % kPlaces].scratch;
      if (scratch.load(std::memory_order_relaxed) == nullptr) continue;
      if (Scratch* taken = scratch.exchange(nullptr, std::memory_order_acq_rel)) {
        return std::unique_ptr<Scratch>(taken);
      }
    }
    return nullptr;
  }

  void GiveBack(std::unique_ptr<Scratch> returned) {
    for (std::size_t i = 0; i < kTries; ++i) {
      Scratch* empty = nullptr;
      if (places_[(Home() + i) % kPlaces].scratch.compare_exchange_strong(
              empty, returned.get(), std::memory_order_acq_rel, std::memory_order_relaxed)) {
        static_cast<void>(returned.release());
        return;
      }
    }
  }

 private:
  static constexpr std::size_t kPlaces = 64;
  static constexpr std::size_t kTries = 8;
  struct alignas(64) Place {
    std::atomic<Scratch*> scratch{nullptr};
  };

  static std::size_t Home() { return std::hash<std::thread::id>()(std::this_thread::get_id()); }

  std::array<Place, kPlaces> places_;
};

namespace {

struct KeptValues : WorkedOut {
  explicit KeptValues(const Program& program) : values(program) {}
  Scratch values;
};

}  // namespace

DerivedCaseRecord::DerivedCaseRecord(const TransformationDictionary& owner,
                                     std::unique_ptr<Scratch> borrowed)
    : owner_(owner), borrowed_(std::move(borrowed)), values_(borrowed_.get()) {}

DerivedCaseRecord::DerivedCaseRecord(const TransformationDictionary& owner, const Scratch& values)
    : owner_(owner), values_(&values) {}

DerivedCaseRecord::~DerivedCaseRecord() {
  if (borrowed_ != nullptr) owner_.store_->GiveBack(std::move(borrowed_));
}

int DerivedCaseRecord::GetPosition(const std::string& name) const {
  const ScoreDictVar* var = owner_.FindVar(name);
  return var == nullptr ? -1 : var->GetCasePosition();
}

const ScoreValue* DerivedCaseRecord::GetValue(int position) const {
  const auto index = static_cast<std::size_t>(position);
  const bool known = position >= 0 && index < owner_.program_->DerivedCount();
  return known ? values_->Result(index) : nullptr;
}

const ScoreValue* DerivedCaseRecord::GetValue(const std::string& name) const {
  return GetValue(GetPosition(name));
}

TransformationDictionary::TransformationDictionary(std::unique_ptr<Program> program,
                                                   std::vector<svmscore::transform::Remark> remarks)
    : program_(std::move(program)),
      store_(std::make_unique<Store>()),
      remarks_(std::move(remarks)) {}

TransformationDictionary::~TransformationDictionary() = default;

TransformVar* TransformationDictionary::FindDerived(const std::string& name) const {
  return dynamic_cast<TransformVar*>(FindVar(name));
}

void TransformationDictionary::SetUpDerivedCaseRecord() {
  int position = 0;
  for (ScoreDictVar* var : GetVariables()) var->SetCasePosition(position++);
}

const Scratch& TransformationDictionary::ValuesOf(const InputCaseRecord& record) const {
  InputCaseRecord::Kept& kept = record.KeptBy(program_.get());
  if (kept.what == nullptr) kept.what = std::make_unique<KeptValues>(*program_);
  Scratch& values = static_cast<KeptValues&>(*kept.what).values;
  if (!kept.is_current) program_->Evaluate(record, values);
  kept.is_current = true;
  return values;
}

std::unique_ptr<DerivedCaseRecord> TransformationDictionary::GetValuesForDerivedVars(
    const ScoreCaseRecord* record, const ScoreDictionary*) const {
  if (const auto* inputs = dynamic_cast<const InputCaseRecord*>(record)) {
    return std::make_unique<DerivedCaseRecord>(*this, ValuesOf(*inputs));
  }
  std::unique_ptr<Scratch> scratch = store_->Take();
  if (scratch == nullptr) scratch = std::make_unique<Scratch>(*program_);
  if (record != nullptr) program_->Evaluate(*record, *scratch);
  return std::make_unique<DerivedCaseRecord>(*this, std::move(scratch));
}

}  // namespace MCZandor_850
