// The version of the program that wrote a document.
#ifndef HOST_MODEL_VERSION_INFO_H_
#define HOST_MODEL_VERSION_INFO_H_

#include <string>

#include "host/text/api.h"

namespace MCZandor_850 {

// [any thread] Owns: the model that it is given to. Lives: what is returned, as long as this
// object. Fails: the constructor by std::bad_alloc; the rest never.
class SVMSCORE_HOST_API ScoreVersionInfo {
 public:
  virtual ~ScoreVersionInfo();
  virtual const std::string& GetVersion() const = 0;
};

class SVMSCORE_HOST_API VersionInfo : public ScoreVersionInfo {
 public:
  explicit VersionInfo(const std::string& version);
  ~VersionInfo() override;
  const std::string& GetVersion() const override { return version_; }

 private:
  std::string version_;
};

}  // namespace MCZandor_850

#endif  // HOST_MODEL_VERSION_INFO_H_
