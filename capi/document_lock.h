// Reading a model's document, which Xerces wants one thread at a time to do.
#ifndef CAPI_DOCUMENT_LOCK_H_
#define CAPI_DOCUMENT_LOCK_H_

#include <mutex>

namespace svmscore::capi {

// Holds a document for the calling thread. The process does not fork meanwhile, but waits: the
// child would find the document held by a thread that it does not have. [any thread, one lock for
// each]
class DocumentLock {
 public:
  explicit DocumentLock(std::mutex& document);
  ~DocumentLock();
  DocumentLock(const DocumentLock&) = delete;
  DocumentLock& operator=(const DocumentLock&) = delete;

 private:
  std::unique_lock<std::mutex> document_;
};

}  // namespace svmscore::capi

#endif  // CAPI_DOCUMENT_LOCK_H_
