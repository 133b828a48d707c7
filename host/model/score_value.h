// One value of a case, a category or a replacement: a number or a text.
#ifndef HOST_MODEL_SCORE_VALUE_H_
#define HOST_MODEL_SCORE_VALUE_H_

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "host/text/api.h"
#include "host/text/number_key.h"

namespace MCZandor_850 {

// A value is in one of three states: present, missing, or invalid (something was given, but it
// cannot be a value of its field).
// Const functions: [any thread]. The others: [one thread] for each value. Fails: std::bad_alloc
// where a text is made or copied; else never.
class SVMSCORE_HOST_API ScoreValue {
 public:
  virtual ~ScoreValue();

  virtual bool IsNumeric() const = 0;
  virtual bool IsMissing() const = 0;
  virtual bool IsInvalid() const = 0;
  // The number; of a text, the number that it spells, or NaN. System-missing where it is missing.
  virtual double GetDouble() const = 0;
  // What GetDouble leaves of a whole number that no double holds; 0 for everything else.
  virtual std::int64_t GetRest() const { return 0; }
  // The text; of a number, the text it was given in a document, else its shortest exact form.
  // Empty where the value is missing.
  virtual std::string GetText() const = 0;
  // Two numbers are equal when they compare equal, two texts when their bytes do; a number and a
  // text never are. Missing and invalid values and null pointers equal nothing.
  virtual bool IsEqual(const ScoreValue* other) const = 0;
  // A copy. Owns: the caller.
  virtual std::unique_ptr<ScoreValue> Clone() const = 0;
};

class SVMSCORE_HOST_API NumericValue : public ScoreValue {
 public:
  explicit NumericValue(double value);
  // A number that a document wrote as `text`.
  NumericValue(double value, std::string text);
  NumericValue(const svmscore::NumberKey& key, std::string text);

  // The double that means a missing number. Ask for it; never assume its bits.
  static double GetSysmisValue();

  // Makes the value present (or missing, for the system-missing number) and forgets its text.
  void SetDoubleValue(double value);
  void SetKey(const svmscore::NumberKey& key);
  // Makes the value invalid; `text` is what was given.
  void SetInvalid(std::string_view text);

  bool IsNumeric() const override { return true; }
  bool IsMissing() const override;
  bool IsInvalid() const override { return invalid_; }
  double GetDouble() const override { return value_; }
  std::int64_t GetRest() const override { return rest_; }
  std::string GetText() const override;
  bool IsEqual(const ScoreValue* other) const override;
  std::unique_ptr<ScoreValue> Clone() const override;

 private:
  double value_;
  std::int64_t rest_ = 0;
  bool invalid_ = false;
  std::string text_;
};

class SVMSCORE_HOST_API StringValue : public ScoreValue {
 public:
  // A null pointer makes an empty text.
  explicit StringValue(const char* text);
  explicit StringValue(const std::string& text);

  // Keeps the buffer of the earlier text where it is large enough, but not far too large.
  void SetText(const char* text, std::size_t size);
  // Forgets the text.
  void SetInvalid();

  const std::string& GetTextReference() const { return text_; }

  bool IsNumeric() const override { return false; }
  // A text is never missing by itself: an empty text is a text.
  bool IsMissing() const override { return false; }
  bool IsInvalid() const override { return invalid_; }
  double GetDouble() const override;
  std::string GetText() const override { return text_; }
  bool IsEqual(const ScoreValue* other) const override;
  std::unique_ptr<ScoreValue> Clone() const override;

 private:
  std::string text_;
  bool invalid_ = false;
};

}  // namespace MCZandor_850

#endif  // HOST_MODEL_SCORE_VALUE_H_
