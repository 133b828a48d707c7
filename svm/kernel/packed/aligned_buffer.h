// A 64-byte aligned array of doubles: a whole number of vector registers, and of cache lines.
#ifndef SVM_KERNEL_PACKED_ALIGNED_BUFFER_H_
#define SVM_KERNEL_PACKED_ALIGNED_BUFFER_H_

#include <cstddef>
#include <memory>
#include <new>

namespace MCSVM_700::packed {

class AlignedBuffer {
 public:
  double* data() { return data_.get(); }
  const double* data() const { return data_.get(); }
  std::size_t size() const { return size_; }
  // Makes room for `size` doubles. The content is lost if that takes a new array.
  void Reserve(std::size_t size) {
    if (size <= size_) return;
    data_.reset();
    size_ = 0;
    data_.reset(static_cast<double*>(::operator new(size * sizeof(double), kAlignment)));
    size_ = size;
  }

 private:
  static constexpr std::align_val_t kAlignment{64};
  struct Free {
    void operator()(double* data) const { ::operator delete(data, kAlignment); }
  };

  std::unique_ptr<double, Free> data_;
  std::size_t size_ = 0;
};

}  // namespace MCSVM_700::packed

#endif  // SVM_KERNEL_PACKED_ALIGNED_BUFFER_H_
