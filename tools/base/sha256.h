// SHA-256 digests.
#ifndef TOOLS_BASE_SHA256_H_
#define TOOLS_BASE_SHA256_H_

#include <cstddef>
#include <memory>
#include <string>

namespace svmscore::tools {

// [one thread] for each object. Fails: the constructor and Hex by std::bad_alloc.
class Sha256 {
 public:
  Sha256();
  ~Sha256();
  Sha256(const Sha256&) = delete;
  Sha256& operator=(const Sha256&) = delete;

  void Add(const void* bytes, std::size_t count);
  // The digest of what has been added, in lower-case hexadecimal; then it starts anew.
  std::string Hex();

 private:
  struct Context;
  std::unique_ptr<Context> context_;
};

}  // namespace svmscore::tools

#endif  // TOOLS_BASE_SHA256_H_
