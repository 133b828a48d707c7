#include "common/record.h"

#include <algorithm>
#include <new>

namespace MCCommon_850 {

Record::Record(int n) {
  const int wanted = n < 0 ? 1 : n;
  elements_.reset(new (std::nothrow) double[static_cast<std::size_t>(wanted)]());
  if (elements_ != nullptr) size_ = wanted;
}

Record::Record(const Record& other) {
  *this = other;
}

Record& Record::operator=(const Record& other) {
  if (this == &other) return *this;
  if (other.elements_ == nullptr) {
    elements_.reset();
    size_ = 0;
    return *this;
  }
  elements_.reset(new (std::nothrow) double[static_cast<std::size_t>(other.size_)]);
  size_ = elements_ != nullptr ? other.size_ : 0;
  std::copy_n(other.elements_.get(), size_, elements_.get());
  return *this;
}

bool Record::Resize(int n) {
  if (n == size_) return true;
  std::unique_ptr<double[]> fresh;
  if (n >= 0) {
    fresh.reset(new (std::nothrow) double[static_cast<std::size_t>(n)]);
    if (fresh == nullptr) return false;
  }
  elements_ = std::move(fresh);
  size_ = std::max(n, 0);
  return true;
}

}  // namespace MCCommon_850
