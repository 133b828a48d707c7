#include "svm/model/model_data.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <memory>
#include <utility>

namespace MCZandor_850 {

namespace {

// A document's position, counted from 1, as one counted from 0. The lowest int stays what it is.
int ZeroBased(int index) {
  return index == std::numeric_limits<int>::min() ? index : index - 1;
}

}  // namespace

SVMModelData::ST_SUPPORTVECTORMACHINE::~ST_SUPPORTVECTORMACHINE() {
  delete extension;
}

bool SVMModelData::ST_SUPPORTVECTORMACHINE::IsWhole() const {
  if (support_vectors.size() < coefficients.size()) return false;
  const auto terms = static_cast<std::ptrdiff_t>(coefficients.size());
  return std::all_of(support_vectors.begin(), support_vectors.begin() + terms,
                     [](const MCSVM_700::SVMDataCase* vector) {
                       return vector != nullptr && vector->values.size() >= vector->indices.size();
                     });
}

SVMModelData::~SVMModelData() {
  for (const auto& [id, instance] : instances_) delete instance;
  instances_.clear();
  for (ST_SUPPORTVECTORMACHINE* machine : machines_) delete machine;
  for (std::size_t i = 0; i < fields_.size(); ++i) {
    if (field_types_[i] == kFieldReference) {
      delete static_cast<ST_FIELDREF*>(fields_[i]);
    } else {
      delete static_cast<ST_CATEGORICALPREDICTOR*>(fields_[i]);
    }
  }
}

// A type is appended before its record: should the second append fail, the record is still owned
// here and the list of types, which is never shorter than that of the records, tells all kinds.
void SVMModelData::AddFieldRef(std::string name, std::string missing_replacement) {
  auto field =
      std::make_unique<ST_FIELDREF>(ST_FIELDREF{std::move(name), std::move(missing_replacement)});
  field_types_.push_back(kFieldReference);
  fields_.push_back(field.get());
  static_cast<void>(field.release());
}

void SVMModelData::AddCategoricalPredictor(std::string name, std::string value,
                                           double coefficient) {
  auto field = std::make_unique<ST_CATEGORICALPREDICTOR>();
  field->name = std::move(name);
  field->value = std::move(value);
  field->coefficient = coefficient;
  field_types_.push_back(kCategoricalPredictor);
  fields_.push_back(field.get());
  static_cast<void>(field.release());
}

void SVMModelData::AddSupportVectorMachine(ST_SUPPORTVECTORMACHINE* machine) {
  std::unique_ptr<ST_SUPPORTVECTORMACHINE> owned(machine);
  machines_.push_back(machine);
  static_cast<void>(owned.release());
}

void SVMModelData::AddVectorInstance(const std::string& id, const std::vector<int>& indices,
                                     const std::vector<double>& entries) {
  AddVectorInstance(id, std::vector<int>(indices), std::vector<double>(entries));
}

void SVMModelData::AddVectorInstance(const std::string& id, std::vector<int>&& indices,
                                     std::vector<double>&& entries) {
  if (id.empty() || indices.empty() || indices.size() != entries.size()) return;
  auto instance = std::make_unique<MCSVM_700::SVMDataCase>();
  instance->indices = std::move(indices);
  for (int& index : instance->indices) index = ZeroBased(index);
  instance->values = std::move(entries);
  if (instances_.emplace(id, instance.get()).second) static_cast<void>(instance.release());
}

MCSVM_700::SVMDataCase* SVMModelData::GetVectorInstance(const std::string& id) const {
  if (id.empty()) return nullptr;
  const auto found = instances_.find(id);
  return found == instances_.end() ? nullptr : found->second;
}

}  // namespace MCZandor_850
