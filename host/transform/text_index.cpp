// TextIndex: how often a term occurs in a text.
#include <algorithm>
#include <array>
#include <cmath>
#include <unordered_map>
#include <utility>
#include <vector>

#include "host/model/message_codes.h"
#include "host/model/ss_exception.h"
#include "host/transform/compile_expression.h"
#include "host/transform/read_word_rules.h"
#include "host/transform/text/unicode.h"
#include "host/transform/text/word_matching.h"
#include "host/transform/text_normalisation.h"
#include "host/transform/value/conversion.h"

namespace svmscore::transform {
namespace {

enum class Weights { kTermFrequency, kBinary, kLogarithmic, kAugmented };

// The largest number of times that one word occurs in the text.
std::size_t MostFrequent(const Words& text) {
  std::unordered_map<std::u32string_view, std::size_t> counts;
  std::size_t most = 0;
  for (const Word& word : text) most = std::max(most, ++counts[word.text]);
  return most;
}

class TextIndex : public Expression {
 public:
  TextIndex(const Element* element, const Field& field, std::unique_ptr<Expression> term)
      : slot_(field.slot), term_(std::move(term)), rules_(ReadWordRules(element)) {
    NestOver(term_->Depth());
    Contain(term_->Size());
    ReadWeights(element);
    ReadHits(element);
    for (const Element* child = FirstContent(element); child != nullptr;
         child = NextContent(child)) {
      if (IsNamed(child, "TextIndexNormalization")) normalisations_.emplace_back(child, rules_);
    }
    const Value* fixed = term_->Fixed();
    if (fixed != nullptr && fixed->IsPresent()) {
      Arena pool;
      WorkBudget work;
      fixed_term_ = rules_.Split(TextOf(*fixed, pool), work);
    }
  }

  Value Evaluate(const Frame& frame) const override {
    const Value& value = frame.slots[slot_];
    const Value term = fixed_term_ ? Value() : term_->Evaluate(frame);
    if (value.IsMissing() || (!fixed_term_ && term.IsMissing())) return Value::Missing();
    if (value.IsInvalid() || term.IsInvalid()) return Value::Invalid();
    std::string text(TextOf(value, frame.arena));
    WorkBudget work;
    for (const TextNormalisation& step : normalisations_) {
      if (!step.Run(text, work)) return Value::Invalid();
    }
    const auto words = rules_.Split(text, work);
    if (!words) return Value::Invalid();
    const auto term_words =
        fixed_term_ ? std::nullopt : rules_.Split(TextOf(term, frame.arena), work);
    if (!fixed_term_ && !term_words) return Value::Invalid();
    const auto count = Count(*words, fixed_term_ ? *fixed_term_ : *term_words, work);
    return count ? Weigh(*words, *count) : Value::Invalid();
  }

 private:
  void ReadWeights(const Element* element) {
    constexpr std::array<std::pair<std::string_view, Weights>, 4> kNames = {{
        {"termFrequency", Weights::kTermFrequency},
        {"binary", Weights::kBinary},
        {"logarithmic", Weights::kLogarithmic},
        {"augmentedNormalizedTermFrequency", Weights::kAugmented},
    }};
    const std::string name = FindAttribute(element, "localTermWeights").value_or("termFrequency");
    const auto* found = std::find_if(kNames.begin(), kNames.end(),
                                     [&](const auto& named) { return named.first == name; });
    if (found == kNames.end()) {
      ThrowAt(element, code::kBadValue, name, "localTermWeights", NameOf(element));
    }
    weights_ = found->second;
  }

  void ReadHits(const Element* element) {
    const std::string hits = FindAttribute(element, "countHits").value_or("allHits");
    if (hits != "allHits" && hits != "bestHits") {
      ThrowAt(element, code::kBadValue, hits, "countHits", NameOf(element));
    }
    best_hits_ = hits == "bestHits";
  }

  // Nothing once the work is spent.
  std::optional<std::size_t> Count(const Words& text, const Words& term, WorkBudget& work) const {
    std::size_t count = 0;
    int best = rules_.MostEdits();
    if (term.empty()) return 0;
    if (best == 0) return Occurrences(text, term, work);
    for (std::size_t at = 0; at + term.size() <= text.size(); ++at) {
      const auto edits = EditsAt(text, at, term, best, work);
      if (!edits) return std::nullopt;
      if (*edits > best) continue;
      if (best_hits_ && *edits < best) {
        best = *edits;
        count = 0;
      }
      ++count;
    }
    return count;
  }

  Value Weigh(const Words& text, std::size_t count) const {
    const auto frequency = static_cast<double>(count);
    const double binary = count > 0 ? 1.0 : 0.0;
    switch (weights_) {
      case Weights::kTermFrequency:
        return Value::Integer(static_cast<std::int64_t>(count));
      case Weights::kBinary:
        return Value::Integer(count > 0 ? 1 : 0);
      case Weights::kLogarithmic:
        return Value::Double(std::log10(1.0 + frequency));
      default:
        if (count == 0) return Value::Double(0.0);
        return Value::Double(0.5 * (binary + frequency / static_cast<double>(MostFrequent(text))));
    }
  }

  const int slot_;
  const std::unique_ptr<Expression> term_;
  const WordRules rules_;
  Weights weights_ = Weights::kTermFrequency;
  bool best_hits_ = false;
  std::vector<TextNormalisation> normalisations_;
  std::optional<Words> fixed_term_;  // where the term never changes
};

}  // namespace

Compiled CompileTextIndex(const Element* element, const Context& context) {
  const Field field = context.FieldOf(element, "textField");
  auto term = context.Compile(OnlyExpression(element, "TextIndexNormalization"));
  return std::make_unique<TextIndex>(element, field, std::move(term));
}

}  // namespace svmscore::transform
