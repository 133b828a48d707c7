#include "host/xml/document_memory.h"

#include <limits>
#include <new>

#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PlatformUtils.hpp>

namespace svmscore {

DocumentMemory::~DocumentMemory() {
  while (blocks_.next != &blocks_) DocumentMemory::deallocate(blocks_.next + 1);
}

void* DocumentMemory::allocate(XMLSize_t size) try {
  if (size > std::numeric_limits<XMLSize_t>::max() - sizeof(Link)) throw std::bad_alloc();
  void* raw = ::operator new(sizeof(Link) + size);
  Link* link = new (raw) Link;
  link->previous = &blocks_;
  link->next = blocks_.next;
  blocks_.next->previous = link;
  blocks_.next = link;
  return link + 1;
} catch (const std::bad_alloc&) {
  throw xercesc::OutOfMemoryException();
}

void DocumentMemory::deallocate(void* memory) {
  if (memory == nullptr) return;
  Link* link = static_cast<Link*>(memory) - 1;
  link->previous->next = link->next;
  link->next->previous = link->previous;
  ::operator delete(link);
}

xercesc::MemoryManager* DocumentMemory::getExceptionMemoryManager() {
  return xercesc::XMLPlatformUtils::fgMemoryManager;
}

}  // namespace svmscore
