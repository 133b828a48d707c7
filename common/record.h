// MCCommon_850::Record: an array of doubles of fixed size.
#ifndef COMMON_RECORD_H_
#define COMMON_RECORD_H_

#include <cstddef>
#include <memory>

namespace MCCommon_850 {

// Nothing here throws: a record that could not be allocated has size 0 and no array.
class Record {
 public:
  // n zeros; one zero for a negative n.
  explicit Record(int n);
  Record(const Record& other);
  Record& operator=(const Record& other);
  ~Record() = default;

  int Size() const { return size_; }
  // REQUIRES: 0 <= i < Size().
  double operator[](int i) const { return elements_[static_cast<std::size_t>(i)]; }
  double& operator[](int i) { return elements_[static_cast<std::size_t>(i)]; }
  const double* GetAll() const { return elements_.get(); }
  double* GetAll() { return elements_.get(); }

  // Replaces the array by one of n elements (none for a negative n) whose values are not set. For n
  // equal to the size nothing happens. False, and nothing changes, if memory runs out.
  bool Resize(int n);

 private:
  std::unique_ptr<double[]> elements_;
  int size_ = 0;
};

}  // namespace MCCommon_850

#endif  // COMMON_RECORD_H_
