// The memory of one document.
#ifndef HOST_XML_DOCUMENT_MEMORY_H_
#define HOST_XML_DOCUMENT_MEMORY_H_

#include <cstddef>

#include <xercesc/framework/MemoryManager.hpp>

namespace svmscore {

// What the parser and the document allocate. Whatever they have not given back is freed with this
// object: the parser's library loses blocks where memory runs out half-way through its own
// constructors. One thread at a time.
class DocumentMemory : public xercesc::MemoryManager {
 public:
  DocumentMemory() = default;
  ~DocumentMemory() override;
  DocumentMemory(const DocumentMemory&) = delete;
  DocumentMemory& operator=(const DocumentMemory&) = delete;

  // Throws xercesc::OutOfMemoryException, as the library expects of it.
  void* allocate(XMLSize_t size) override;
  void deallocate(void* memory) override;
  // Exceptions outlive this object.
  xercesc::MemoryManager* getExceptionMemoryManager() override;

 private:
  // Stands before every block.
  struct alignas(std::max_align_t) Link {
    Link* previous = this;
    Link* next = this;
  };

  Link blocks_;  // a ring
};

}  // namespace svmscore

#endif  // HOST_XML_DOCUMENT_MEMORY_H_
