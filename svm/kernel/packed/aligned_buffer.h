// A 64-byte aligned array of numbers, which begins a vector register and a cache line.
#ifndef SVM_KERNEL_PACKED_ALIGNED_BUFFER_H_
#define SVM_KERNEL_PACKED_ALIGNED_BUFFER_H_

#include <cstddef>
#include <memory>
#include <new>

namespace MCSVM_700::packed {

template <class T>
class AlignedArray {
 public:
  T* data() { return data_.get(); }
  const T* data() const { return data_.get(); }
  std::size_t size() const { return size_; }
  // Makes room for `size` numbers. The content is lost if that takes a new array.
  void Reserve(std::size_t size) {
    if (size <= size_) return;
    data_.reset();
    size_ = 0;
    data_.reset(static_cast<T*>(::operator new(size * sizeof(T), kAlignment)));
    size_ = size;
  }

 private:
  static constexpr std::align_val_t kAlignment{64};
  struct Free {
    void operator()(T* data) const { ::operator delete(data, kAlignment); }
  };

  std::unique_ptr<T, Free> data_;
  std::size_t size_ = 0;
};

using AlignedBuffer = AlignedArray<double>;

}  // namespace MCSVM_700::packed

#endif  // SVM_KERNEL_PACKED_ALIGNED_BUFFER_H_
