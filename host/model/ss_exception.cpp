#include "host/model/ss_exception.h"

#include <utility>

#include "host/text/printable.h"

namespace MCZandor_850 {

namespace {

// A name or a value may be as long as a document; a sentence shows as much as people will read.
std::vector<std::string> Inserts(const std::vector<std::string>& parts) {
  std::vector<std::string> inserts;
  inserts.reserve(parts.size());
  for (const std::string& part : parts) {
    inserts.push_back(svmscore::Shortened(part, svmscore::kLongestInsert));
  }
  return inserts;
}

}  // namespace

SSException::SSException(ScoreContext::IErrorFormater* formater) : formater_(formater) {}
SSException::SSException(const SSException&) = default;
SSException& SSException::operator=(const SSException&) = default;
SSException::~SSException() = default;

void SSException::SetMessage(int code, std::vector<std::string> parts) {
  code_ = code;
  parts_ = std::move(parts);
  place_.clear();
  where_ = {};
  remedy_.clear();
  remark_.clear();
  if (formater_ != nullptr) {
    sentence_ = formater_->Sentence(code_, Inserts(parts_));
  } else {
    sentence_ = std::to_string(code_);
    for (const std::string& part : parts_) sentence_ += ' ' + part;
  }
  Compose();
}

void SSException::SetPlace(std::string words, svmscore::Place place) {
  element_ = nullptr;
  place_ = std::move(words);
  where_ = std::move(place);
  Compose();
}

void SSException::Restate(std::string sentence) {
  sentence_ = std::move(sentence);
  remark_.clear();
  place_.clear();
  where_ = {};
  Compose();
}

void SSException::AddRemark(const std::string& remark) {
  remark_ += "; " + remark;
  Compose();
}

void SSException::Compose() {
  text_ = sentence_;
  if (!place_.empty()) {
    text_ += " (" + svmscore::Shortened(place_, svmscore::kLongestInsert) + ")";
  }
  text_ += remark_;
}

std::string SSException::GetRemedy() const {
  if (!remedy_.empty()) return remedy_;
  return formater_ == nullptr ? std::string() : formater_->Remedy(code_, Inserts(parts_));
}

}  // namespace MCZandor_850
