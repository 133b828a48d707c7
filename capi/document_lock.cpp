#include "capi/document_lock.h"

#include <pthread.h>

#include <new>
#include <shared_mutex>

namespace svmscore::capi {
namespace {

// Shared by whoever reads a document, held alone by a fork. The door lets them in one by one, so
// that a fork waits for those who are in, but not for those who come.
std::shared_mutex readers;
std::mutex door;

[[maybe_unused]] const int registered = pthread_atfork(
    [] {
      door.lock();
      readers.lock();
    },
    [] {
      readers.unlock();
      door.unlock();
    },
    [] {
      // The child's only thread is another one than that which locked, which such a lock minds.
      new (&readers) std::shared_mutex;
      door.unlock();
    });

}  // namespace

DocumentLock::DocumentLock(std::mutex& document) : document_(document, std::defer_lock) {
  {
    const std::lock_guard lock(door);
    readers.lock_shared();
  }
  document_.lock();
}

DocumentLock::~DocumentLock() {
  document_.unlock();
  readers.unlock_shared();
}

}  // namespace svmscore::capi
