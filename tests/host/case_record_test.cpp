#include "host/model/score_case_record.h"

#include <cmath>

#include <gtest/gtest.h>

namespace MCZandor_850 {
namespace {

using svmscore::DataType;
using svmscore::OpType;
using Invalid = FieldTreatment::Invalid;
using Outliers = FieldTreatment::Outliers;

struct Field {
  explicit Field(OpType op = OpType::kContinuous, DataType type = DataType::kDouble)
      : var("f", op, {type, 0}) {}

  void ReplaceMissing(const ScoreValue& value) {
    auto* stats = new VarStats;
    stats->SetMissingReplacement(&value);
    var.SetVarStats(stats);
  }
  // A cell as models see it: its number or text, or that it is missing or invalid.
  std::string Read(const char* cell, bool replace = true) {
    var.SetTreatment(treatment);
    InputCaseRecord record({&var}, true, replace);
    const InputState state = record.SetText(0, cell);
    EXPECT_EQ(record.HasInvalid(), state == InputState::kInvalid);
    if (state == InputState::kInvalid) return "invalid";
    const ScoreValue* value = record.GetValue(0);
    EXPECT_EQ(state == InputState::kMissing, value == nullptr);
    return value == nullptr ? "missing" : value->GetText();
  }

  ScoreDictVar var;
  FieldTreatment treatment;
};

TEST(InputCaseRecord, TellsMissingFromInvalidFromValid) {
  Field field;
  field.var.DeclareInterval({0.0, 100.0, true, true});
  field.var.DeclareMissing("-999");
  field.var.DeclareMissing("N/A");
  field.var.DeclareInvalid("50");
  EXPECT_EQ(field.Read("100"), "100");
  EXPECT_EQ(field.Read("-999.0"), "missing");
  EXPECT_EQ(field.Read("N/A"), "missing");
  for (const char* cell : {"100.5", "50", "abc", "1e999", "NaN"}) {
    EXPECT_EQ(field.Read(cell), "invalid") << cell;
  }
  field.var.DeclareMissing("NaN");
  EXPECT_EQ(field.Read("NaN"), "missing");
  EXPECT_EQ(field.Read("INF"), "invalid");
}

TEST(InputCaseRecord, TellsIntegersApartThatAreOneDouble) {
  const char* even = "9007199254740992";
  const char* odd = "9007199254740993";
  Field field(OpType::kCategorical, DataType::kInteger);
  field.var.DeclareCategory(odd, "");
  EXPECT_EQ(field.Read(even), "invalid");
  EXPECT_EQ(field.Read(odd), odd);
  field.var.DeclareCategory(even, "");
  EXPECT_EQ(field.var.GetCategoryIndexOfText(odd), 0);
  EXPECT_EQ(field.var.GetCategoryIndexOfText(even), 1);
  EXPECT_FALSE(field.var.GetCategories()[0]->IsEqual(field.var.GetCategories()[1]));
  field.var.DeclareMissing("9223372036854775807");
  EXPECT_EQ(field.Read("9223372036854775806"), "invalid");
  EXPECT_EQ(field.Read("9223372036854775807"), "missing");
}

TEST(InputCaseRecord, ListedValuesCloseTheSetAndCompareByType) {
  Field numbers(OpType::kCategorical, DataType::kInteger);
  numbers.var.DeclareCategory("1", "");
  EXPECT_EQ(numbers.Read("1.0"), "1");
  EXPECT_EQ(numbers.Read("2"), "invalid");
  Field texts(OpType::kCategorical, DataType::kString);
  // A category that is added later does not close the set.
  texts.var.AddCategory(StringValue("a"), "a");
  texts.var.AddCategory(StringValue("a"), "a");
  EXPECT_EQ(texts.var.GetCategoryCount(), 1);
  EXPECT_TRUE(texts.var.DeclaresNoValues());
  EXPECT_EQ(texts.Read("anything"), "anything");
  texts.var.DeclareCategory("1", "one");
  EXPECT_EQ(texts.Read("1.0"), "invalid");
}

TEST(InputCaseRecord, ReplacesMissingOnlyWhereAsked) {
  Field field;
  field.var.DeclareInterval({0.0, 1.0, true, true});
  field.ReplaceMissing(NumericValue(20.0));  // outside the interval, but used all the same
  field.var.DeclareMissing("-1");
  field.var.DeclareMissing("20");
  EXPECT_EQ(field.Read("-1"), "20");
  EXPECT_EQ(field.Read("-1", false), "missing");
  InputCaseRecord fresh({&field.var}, true, true);
  EXPECT_EQ(fresh.GetValue(0)->GetDouble(), 20.0);
  EXPECT_FALSE(field.var.IsMissingValue(fresh.GetValue(0)));
  EXPECT_TRUE(field.var.IsValidValue(fresh.GetValue(0)));
  field.treatment.missing_is_invalid = true;
  EXPECT_EQ(field.Read("-1"), "invalid");
  fresh.Clear();
  EXPECT_TRUE(fresh.HasInvalid());
  fresh.SetNumber(0, 0.5);
  EXPECT_FALSE(fresh.HasInvalid());
}

TEST(InputCaseRecord, TreatsInvalidValuesAsDeclared) {
  Field field(OpType::kCategorical, DataType::kString);
  field.var.DeclareCategory("ok", "");
  field.ReplaceMissing(StringValue("replacement"));
  field.treatment.invalid = Invalid::kAsMissing;
  EXPECT_EQ(field.Read("odd"), "replacement");
  field.treatment.invalid = Invalid::kAsIs;
  EXPECT_EQ(field.Read("odd"), "odd");
  field.treatment.invalid = Invalid::kAsValue;
  field.treatment.invalid_replacement = std::make_shared<StringValue>("other");
  EXPECT_EQ(field.Read("odd"), "other");
  // A text that is not a number can neither be taken as it is nor be limited.
  Field number;
  number.ReplaceMissing(NumericValue(1.0));
  number.treatment.invalid = Invalid::kAsIs;
  EXPECT_EQ(number.Read("abc"), "missing");
}

TEST(InputCaseRecord, TreatsOutliersAfterValidity) {
  Field field;
  field.treatment.outliers = Outliers::kAsExtreme;
  field.treatment.low = 0.0;
  field.treatment.high = 200.0;
  EXPECT_EQ(field.Read("260"), "200");
  EXPECT_EQ(field.Read("200"), "200");
  field.var.DeclareInterval({0.0, 250.0, true, true});
  EXPECT_EQ(field.Read("260"), "invalid");
  field.treatment.outliers = Outliers::kAsMissing;
  EXPECT_EQ(field.Read("-0.5"), "invalid");
  EXPECT_EQ(field.Read("240"), "missing");
}

TEST(InputCaseRecord, ReadsByPosition) {
  Field field;
  InputCaseRecord by_position({&field.var}, true, true);
  by_position.SetNumber(0, 4.0);
  EXPECT_EQ(by_position.GetValueOf(field.var), nullptr);  // no position yet
  field.var.SetCasePosition(by_position.GetPosition("f"));
  EXPECT_EQ(by_position.GetValueOf(field.var)->GetDouble(), 4.0);
  EXPECT_EQ(by_position.GetValue(7), nullptr);
  EXPECT_EQ(by_position.GetPosition("g"), -1);
}

TEST(ScoreValue, EqualityKeepsNumbersAndTextsApart) {
  const NumericValue one(1.0, "1.0");
  EXPECT_TRUE(one.IsEqual(one.Clone().get()));
  EXPECT_FALSE(one.IsEqual(nullptr));
  EXPECT_FALSE(StringValue("1").IsEqual(&one));
  EXPECT_EQ(one.GetText(), "1.0");
  const NumericValue missing(NumericValue::GetSysmisValue());
  EXPECT_TRUE(missing.IsMissing());
  EXPECT_FALSE(missing.IsEqual(&missing));
  EXPECT_TRUE(std::isnan(StringValue("abc").GetDouble()));
  EXPECT_EQ(StringValue("2.5").GetDouble(), 2.5);
}

TEST(ScoreValue, LongTextsGoWithTheirCase) {
  const std::string megabyte(1U << 20U, 'm');
  StringValue text("");
  const auto held = [&] { return text.GetTextReference().capacity(); };
  text.SetText(megabyte.data(), megabyte.size());
  text.SetText("a", 1);
  EXPECT_EQ(text.GetText(), "a");
  EXPECT_LT(held(), 2048U);
  text.SetText(megabyte.data(), megabyte.size());
  text.SetInvalid();
  EXPECT_LT(held(), 2048U);
}

}  // namespace
}  // namespace MCZandor_850
