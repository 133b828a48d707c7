// The exception in which reading a document fails, and the sentences behind its codes.
#ifndef HOST_MODEL_SS_EXCEPTION_H_
#define HOST_MODEL_SS_EXCEPTION_H_

#include <exception>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <xercesc/util/XercesDefs.hpp>

#include "host/model/place.h"
#include "host/text/api.h"

namespace XERCES_CPP_NAMESPACE {
class DOMElement;
}

namespace MCZandor_850 {

namespace ScoreContext {

// Turns a code and its message parts into text. [any thread] Owns: the caller. Fails:
// std::bad_alloc.
class SVMSCORE_HOST_API IErrorFormater {
 public:
  virtual ~IErrorFormater();
  // What is wrong: one sentence with the parts filled in, without code or line end.
  virtual std::string Sentence(int code, const std::vector<std::string>& parts) const = 0;
  // What to do about it: one sentence; empty for an unknown code.
  virtual std::string Remedy(int code, const std::vector<std::string>& parts) const = 0;
};

}  // namespace ScoreContext

// The host's message catalogue. Lives: as long as the process.
extern SVMSCORE_HOST_API ScoreContext::IErrorFormater* gErrorFormater;

// [one thread] for each object. Lives: what is returned, until the exception changes or goes.
// Fails: std::bad_alloc; functions that only return a member never.
class SVMSCORE_HOST_API SSException : public std::exception {
 public:
  // With null, the text is the bare code and parts. Lives: `formater`, longer than the exception
  // and its copies.
  explicit SSException(ScoreContext::IErrorFormater* formater);
  SSException(const SSException& other);
  SSException& operator=(const SSException& other);
  ~SSException() override;

  // The parts are texts: names of elements and attributes, an offending value, counts.
  template <typename... Parts>
  void PutErrorMessage(int code, const Parts&... parts) {
    SetMessage(code, {std::string(parts)...});
  }

  void PutErrorMessage(int code, const std::vector<std::string>& parts) { SetMessage(code, parts); }

  int GetErrorCode() const { return code_; }
  const std::vector<std::string>& GetMessageParts() const { return parts_; }
  // What to do: what was set, or else what the formater says.
  std::string GetRemedy() const;
  void SetRemedy(std::string remedy) { remedy_ = std::move(remedy); }
  // The sentence, the place where one was set, and the remark.
  const char* what() const noexcept override { return text_.c_str(); }
  // The same without the place.
  std::string WithoutPlace() const { return sentence_ + remark_; }

  // The element at fault; null where it is not known. Lives: as long as its document.
  void SetElement(const XERCES_CPP_NAMESPACE::DOMElement* element) { element_ = element; }
  const XERCES_CPP_NAMESPACE::DOMElement* GetElement() const { return element_; }
  // The place in words, for example: element MiningField, line 12; and as data. Forgets the
  // element.
  void SetPlace(std::string words, svmscore::Place place = {});
  const std::string& GetPlace() const { return place_; }
  const svmscore::Place& Where() const { return where_; }
  // Says in other words what is wrong, with the same code and parts. Forgets the place in words,
  // and the remark.
  void Restate(std::string sentence);
  // Adds what else the reader should know.
  void AddRemark(const std::string& remark);
  bool HasRemark() const { return !remark_.empty(); }

 private:
  void SetMessage(int code, std::vector<std::string> parts);
  void Compose();

  ScoreContext::IErrorFormater* formater_;
  int code_ = 0;
  std::vector<std::string> parts_;
  const XERCES_CPP_NAMESPACE::DOMElement* element_ = nullptr;
  std::string place_;
  svmscore::Place where_;
  std::string remedy_;
  std::string sentence_;
  std::string remark_;
  std::string text_;  // all of that but the remedy
};

}  // namespace MCZandor_850

namespace svmscore {

// Throws an SSException of `code` at `element` (null where there is no place).
template <typename... Parts>
[[noreturn]] void ThrowAt(const XERCES_CPP_NAMESPACE::DOMElement* element, int code,
                          const Parts&... parts) {
  MCZandor_850::SSException error(MCZandor_850::gErrorFormater);
  error.PutErrorMessage(code, parts...);
  error.SetElement(element);
  throw error;
}

}  // namespace svmscore

#endif  // HOST_MODEL_SS_EXCEPTION_H_
