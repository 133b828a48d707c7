#include "host/score_case_record.h"

#include <cmath>

#include <gtest/gtest.h>

namespace MCZandor_850 {
namespace {

using svmscore::DataType;
using svmscore::OpType;

struct Field {
  explicit Field(OpType op = OpType::kContinuous, DataType type = DataType::kDouble)
      : var("f", op, {type, 0}) {}

  void ReplaceMissing(const ScoreValue& value) {
    auto* stats = new VarStats;
    stats->SetMissingReplacement(&value);
    var.SetVarStats(stats);
  }

  // What becomes of a cell, and the number or text that models see of it ("" for missing).
  std::string Read(const char* cell, InputState expected, bool replace = true) {
    InputCaseRecord record({&var}, true, replace);
    EXPECT_EQ(record.SetText(0, cell), expected) << cell;
    EXPECT_EQ(record.HasInvalid(), expected == InputState::kInvalid);
    const ScoreValue* value = record.GetValue(0);
    return value == nullptr ? "" : value->GetText();
  }

  ScoreDictVar var;
};

TEST(InputCaseRecord, TellsMissingFromInvalidFromValid) {
  Field field;
  field.var.DeclareInterval({0.0, 100.0, true, true});
  field.var.DeclareMissing("-999");
  field.var.DeclareInvalid("50");
  EXPECT_EQ(field.Read("100", InputState::kPresent), "100");
  EXPECT_EQ(field.Read("-999.0", InputState::kMissing), "");
  field.Read("100.5", InputState::kInvalid);
  field.Read("50", InputState::kInvalid);
  field.Read("abc", InputState::kInvalid);
  field.Read("1e999", InputState::kInvalid);
  field.Read("NaN", InputState::kInvalid);
}

TEST(InputCaseRecord, ADeclaredMissingTextOnANumberFieldIsMissing) {
  Field field;
  field.var.DeclareMissing("N/A");
  field.Read("N/A", InputState::kMissing);
  field.Read("NaN", InputState::kInvalid);
  field.var.DeclareMissing("NaN");
  field.Read("NaN", InputState::kMissing);
  field.Read("INF", InputState::kInvalid);
}

TEST(InputCaseRecord, TellsIntegersApartThatAreOneDouble) {
  const char* even = "9007199254740992";
  const char* odd = "9007199254740993";
  Field field(OpType::kCategorical, DataType::kInteger);
  field.var.DeclareCategory(odd, "");
  field.Read(even, InputState::kInvalid);
  EXPECT_EQ(field.Read(odd, InputState::kPresent), odd);
  field.var.DeclareCategory(even, "");
  EXPECT_EQ(field.var.GetCategoryIndexOfText(odd), 0);
  EXPECT_EQ(field.var.GetCategoryIndexOfText(even), 1);
  EXPECT_FALSE(field.var.GetCategories()[0]->IsEqual(field.var.GetCategories()[1]));
  field.var.DeclareMissing("9223372036854775807");
  field.Read("9223372036854775806", InputState::kInvalid);
  field.Read("9223372036854775807", InputState::kMissing);
}

TEST(InputCaseRecord, ListedValuesCloseTheSetAndCompareByType) {
  Field numbers(OpType::kCategorical, DataType::kInteger);
  numbers.var.DeclareCategory("1", "");
  numbers.Read("1.0", InputState::kPresent);
  numbers.Read("2", InputState::kInvalid);
  Field texts(OpType::kCategorical, DataType::kString);
  texts.Read("anything", InputState::kPresent);
  texts.var.DeclareCategory("1", "one");
  texts.Read("1.0", InputState::kInvalid);
  EXPECT_EQ(texts.var.GetCategoryDisplay(0), "one");
}

TEST(InputCaseRecord, ACategoryLearntLaterDoesNotCloseTheSet) {
  Field field(OpType::kCategorical, DataType::kString);
  field.var.AddCategory(StringValue("a"), "a");
  field.var.AddCategory(StringValue("a"), "a");
  EXPECT_EQ(field.var.GetCategoryCount(), 1);
  EXPECT_TRUE(field.var.DeclaresNoValues());
  field.Read("b", InputState::kPresent);
}

TEST(InputCaseRecord, ReplacesMissingOnlyWhereAsked) {
  Field field;
  field.var.DeclareInterval({0.0, 1.0, true, true});
  field.ReplaceMissing(NumericValue(20.0));  // outside the interval, and taken all the same
  field.var.DeclareMissing("-1");
  EXPECT_EQ(field.Read("-1", InputState::kPresent), "20");
  EXPECT_EQ(field.Read("-1", InputState::kMissing, false), "");
  InputCaseRecord fresh({&field.var}, true, true);
  EXPECT_EQ(fresh.GetValue(0)->GetDouble(), 20.0);
  EXPECT_FALSE(field.var.IsMissingValue(fresh.GetValue(0)));
  EXPECT_TRUE(field.var.IsValidValue(fresh.GetValue(0)));
}

TEST(InputCaseRecord, TreatsInvalidValuesAsDeclared) {
  Field field(OpType::kCategorical, DataType::kString);
  field.var.DeclareCategory("ok", "");
  field.ReplaceMissing(StringValue("replacement"));
  FieldTreatment treatment;
  treatment.invalid = FieldTreatment::Invalid::kAsMissing;
  field.var.SetTreatment(treatment);
  EXPECT_EQ(field.Read("odd", InputState::kPresent), "replacement");
  treatment.invalid = FieldTreatment::Invalid::kAsIs;
  field.var.SetTreatment(treatment);
  EXPECT_EQ(field.Read("odd", InputState::kPresent), "odd");
  treatment.invalid = FieldTreatment::Invalid::kAsValue;
  treatment.invalid_replacement = std::make_shared<StringValue>("other");
  field.var.SetTreatment(treatment);
  EXPECT_EQ(field.Read("odd", InputState::kPresent), "other");
}

TEST(InputCaseRecord, AnUnreadableNumberTakenAsItIsHasNoReplacement) {
  Field field;
  field.ReplaceMissing(NumericValue(1.0));
  FieldTreatment treatment;
  treatment.invalid = FieldTreatment::Invalid::kAsIs;
  field.var.SetTreatment(treatment);
  EXPECT_EQ(field.Read("abc", InputState::kMissing), "");
}

TEST(InputCaseRecord, TreatsOutliersAfterValidity) {
  Field field;
  FieldTreatment treatment;
  treatment.outliers = FieldTreatment::Outliers::kAsExtreme;
  treatment.low = 0.0;
  treatment.high = 200.0;
  field.var.SetTreatment(treatment);
  EXPECT_EQ(field.Read("260", InputState::kPresent), "200");
  EXPECT_EQ(field.Read("200", InputState::kPresent), "200");
  field.var.DeclareInterval({0.0, 250.0, true, true});
  field.Read("260", InputState::kInvalid);
  treatment.outliers = FieldTreatment::Outliers::kAsMissing;
  field.var.SetTreatment(treatment);
  field.Read("-0.5", InputState::kInvalid);
  field.Read("240", InputState::kMissing);
}

TEST(InputCaseRecord, AMissingValueMayMakeTheCaseInvalid) {
  Field field;
  field.ReplaceMissing(NumericValue(1.0));
  FieldTreatment treatment;
  treatment.missing_is_invalid = true;
  field.var.SetTreatment(treatment);
  InputCaseRecord record({&field.var}, true, true);
  EXPECT_TRUE(record.HasInvalid());
  record.SetNumber(0, 5.0);
  EXPECT_FALSE(record.HasInvalid());
}

TEST(InputCaseRecord, ReadsByPositionOrByName) {
  Field field;
  InputCaseRecord by_name({&field.var}, false, true);
  by_name.SetNumber(0, 3.0);
  EXPECT_FALSE(by_name.IsIndexedByPosition());
  EXPECT_EQ(by_name.GetPosition("f"), -1);
  EXPECT_EQ(by_name.GetValueOf(field.var)->GetDouble(), 3.0);
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

}  // namespace
}  // namespace MCZandor_850
