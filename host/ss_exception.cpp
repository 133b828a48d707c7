#include "host/ss_exception.h"

#include <utility>

namespace MCZandor_850 {

SSException::SSException(ScoreContext::IErrorFormater* formater) : formater_(formater) {}
SSException::SSException(const SSException&) = default;
SSException& SSException::operator=(const SSException&) = default;
SSException::~SSException() = default;

void SSException::SetMessage(int code, std::vector<std::string> parts) {
  code_ = code;
  parts_ = std::move(parts);
  place_.clear();
  if (formater_ != nullptr) {
    text_ = formater_->Sentence(code_, parts_);
    return;
  }
  text_ = std::to_string(code_);
  for (const std::string& part : parts_) text_ += ' ' + part;
}

void SSException::SetPlace(std::string place) {
  const std::size_t sentence = text_.size() - (place_.empty() ? 0 : place_.size() + 3);
  text_.resize(sentence);
  element_ = nullptr;
  place_ = std::move(place);
  if (!place_.empty()) text_ += " (" + place_ + ")";
}

std::string SSException::GetRemedy() const {
  return formater_ == nullptr ? std::string() : formater_->Remedy(code_, parts_);
}

}  // namespace MCZandor_850
