// The memory of one document.
#ifndef HOST_XML_DOCUMENT_MEMORY_H_
#define HOST_XML_DOCUMENT_MEMORY_H_

#include <cstddef>

#include <xercesc/framework/MemoryManager.hpp>

#include "host/text/api.h"

namespace svmscore {

// Memory for the parser and the document. Whatever they have not given back is freed with this
// object, because the parser's library leaks blocks where memory runs out half-way through its own
// constructors. One thread at a time.
class SVMSCORE_HOST_API DocumentMemory : public xercesc::MemoryManager {
 public:
  DocumentMemory() = default;
  ~DocumentMemory() override;
  DocumentMemory(const DocumentMemory&) = delete;
  DocumentMemory& operator=(const DocumentMemory&) = delete;

  // Throws xercesc::OutOfMemoryException, as the library expects.
  void* allocate(XMLSize_t size) override;
  void deallocate(void* memory) override;
  // Exceptions outlive this object.
  xercesc::MemoryManager* getExceptionMemoryManager() override;

 private:
  // Precedes every block.
  struct alignas(std::max_align_t) Link {
    Link* previous = this;
    Link* next = this;
  };

  Link blocks_;  // a ring
};

}  // namespace svmscore

#endif  // HOST_XML_DOCUMENT_MEMORY_H_
