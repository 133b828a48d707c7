// What names refer to, in which order fields are computed, and which fields are.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "host/model/score_dict_var.h"
#include "host/transform/derived_fields.h"
#include "tests/transform/call_text.h"
#include "tests/transform/fixture.h"

namespace svmscore::transform {
namespace {

const std::string kFieldX = DataField("x", "double");
const std::string kSchemaOfX = "<MiningField name='x'/>";

std::string Derived(const std::string& name, const std::string& call) {
  return DerivedField(name, "double", CallToXml(call));
}

std::string Local(const std::string& fields) {
  return "<LocalTransformations>" + fields + "</LocalTransformations>\n";
}

std::string Global(const std::string& fields) {
  return "<TransformationDictionary>" + fields + "</TransformationDictionary>\n";
}

TEST(References, ResolveInAnyOrder) {
  const std::string fields =
      Derived("d", "+(b, a)") + Derived("b", "*(a, 2)") + Derived("a", "+(x, 1)");
  EXPECT_EQ(Loaded(Document(kFieldX, fields)).DeriveEach("4"), "15");
}

TEST(References, InCirclesAreRefused) {
  EXPECT_EQ(
      Refusal(Document(
          "", Derived("d", "c") + Derived("a", "+(1, b)") + Derived("b", "c") + Derived("c", "a"))),
      "260312 at element DerivedField, line 7: derived fields are computed from each other in "
      "a circle: c -> a -> b -> c (element DerivedField, line 7)");
  EXPECT_EQ(Refusal(Document("", Derived("a", "a"))).substr(0, 6), "260312");
}

TEST(References, ComputeWhatIsNeededAndNothingElse) {
  const std::string local = Local(Derived("used", "+(base, 1)") + Derived("base", "x") +
                                  Derived("unused", "/(y, 0)") + Derived("shown", "*(x, 10)"));
  const std::string output =
      "<Output><OutputField name='o'>" + CallToXml("+(shown, 1)") + "</OutputField></Output>";
  const Loaded loaded(ModelDocument(
      kFieldX + DataField("y", "double"),
      kSchemaOfX + "</MiningSchema>" + output + "<MiningSchema><MiningField name='y'/>", local,
      "<FieldRef field='used'/>"));
  EXPECT_EQ(loaded.Derive("used", {{"x", "4"}}), "5");
  EXPECT_EQ(loaded.Derive("shown", {{"x", "4"}}), "40");
  EXPECT_EQ(loaded.Derive("unused", {{"x", "4"}, {"y", "1"}}), "missing");
  const Program& program = loaded.Dictionary().GetProgram();
  EXPECT_EQ(program.Steps().size(), 3U);
  EXPECT_THAT(program.NeededInputs(), ::testing::ElementsAre(loaded.Inputs()->FindVar("x")));
}

TEST(References, TellOfFieldsThatTheMiningSchemaLeavesOut) {
  const auto load = [&](const std::string& field) {
    return Loaded(ModelDocument(kFieldX + DataField("y", "double"), kSchemaOfX,
                                Local(Derived("a", "x") + Derived("b", "+(y, 1)")),
                                "<FieldRef field='" + field + "'/>"));
  };
  EXPECT_TRUE(load("a").Dictionary().Remarks().empty());
  const Loaded loaded = load("b");
  EXPECT_EQ(loaded.Dictionary().Remarks().size(), 1U);
  EXPECT_EQ(loaded.Derive("b", {{"y", "4"}}), "5");
}

TEST(References, FindLocalFieldsThenInputsThenGlobalOnes) {
  const std::string doubled = Derived("x", "*(x, 2)") + Derived("d", "+(x, 1)");
  const auto load = [&](const std::string& transformations) {
    return Loaded(ModelDocument(kFieldX + DataField("other", "double"), kSchemaOfX, transformations,
                                "<FieldRef field='d'/><FieldRef field='x'/>"));
  };
  const Loaded local = load(Local(doubled));
  // A field that refers to its own name means the input.
  EXPECT_EQ(local.Derive("x", {{"x", "4"}}), "8");
  EXPECT_EQ(local.DeriveEach("4"), "9");
  EXPECT_TRUE(local.Inputs()->FindVar("x")->IsHiddenByDerived());
  EXPECT_FALSE(local.Inputs()->FindVar("other")->IsHiddenByDerived());

  const Loaded global = load(Global(doubled));
  EXPECT_EQ(global.DeriveEach("4"), "5");
  EXPECT_FALSE(global.Inputs()->FindVar("x")->IsHiddenByDerived());

  // A field that is not an input of the model is not found.
  const Loaded unseen = load(Global(Derived("other", "*(x, 2)") + Derived("d", "other")));
  EXPECT_EQ(unseen.DeriveEach("4"), "8");
  EXPECT_TRUE(unseen.Inputs()->FindVar("other")->IsHiddenByDerived());

  // One that was moved out of the model's own transformations stays local.
  std::string moved = doubled;
  moved.insert(moved.find(" name="), " x-scope='local'");
  EXPECT_EQ(load(Global(moved)).DeriveEach("4"), "9");
}

TEST(References, TellWhatAFieldEncodes) {
  const std::string map = "<MapValues outputColumn='o'><FieldColumnPair field='t' column='i'/>" +
                          Table("i;o", {"u;1", "v;2"}) + "</MapValues>";
  const Loaded loaded(
      Document(DataField("t", "string") + kFieldX,
               DerivedField("is_u", "double", "<NormDiscrete field='t' value='u'/>") +
                   DerivedField("number", "double", map) + Derived("plain", "x") +
                   Derived("sum", "+(x, plain)") + Derived("chained", "is_u")));
  for (const auto& [name, expected] :
       Case{{"is_u", "t u"}, {"number", "t u v"}, {"plain", "x"}, {"sum", ""}, {"chained", ""}}) {
    const auto* var = loaded.Dictionary().FindDerived(name);
    std::string source = var->GetFieldName();
    for (const auto* value : var->GetAllEncodedValues()) source += " " + value->GetText();
    EXPECT_EQ(source, expected) << name;
  }
  EXPECT_EQ(loaded.Dictionary().FindDerived("x"), nullptr);
}

TEST(References, LearnCategoriesFromPredictors) {
  const Loaded loaded(
      ModelDocument(DataField("t", "string"), "<MiningField name='t'/>",
                    Local(DerivedField("size", "string", "<FieldRef field='t'/>")),
                    "<CategoricalPredictor name='size' value='s' coefficient='1'/>"
                    "<CategoricalPredictor name='size' value='m' coefficient='1'/>"));
  const auto* var = loaded.Dictionary().FindDerived("size");
  const auto record = loaded.Record({{"t", "m"}});
  const auto derived = loaded.Dictionary().GetValuesForDerivedVars(record.get(), loaded.Inputs());
  EXPECT_EQ(var->GetCategoryIndex(derived->GetDerived(*var)), 1);
  EXPECT_TRUE(var->IsValidValue(derived->GetDerived(*var)));
}

TEST(References, OrderDerivedOrdinalFields) {
  const std::string ordinal =
      "<DerivedField name='g' optype='ordinal' dataType='string'><FieldRef field='x'/>"
      "<Value value='low'/><Value value='high'/></DerivedField>";
  EXPECT_EQ(
      Loaded(Document(DataField("x", "string"),
                      DerivedField("d", "boolean", CallToXml("lessThan(g, 'high')")) + ordinal))
          .DeriveEach("low high mid"),
      "1 0 missing");
}

TEST(DerivedRecord, IsReadByPositionAndByName) {
  const Loaded loaded(Document(kFieldX, Derived("b", "+(a, 1)") + Derived("a", "x")));
  const auto record = loaded.Record({{"x", "4"}}, false);
  const auto derived = loaded.Dictionary().GetValuesForDerivedVars(record.get(), loaded.Inputs());
  EXPECT_EQ(Show(derived->GetValue(derived->GetPosition("b"))), "5");
  EXPECT_EQ(Show(derived->GetValue(std::string("a"))), "4");
  EXPECT_EQ(derived->GetPosition("x"), -1);
  EXPECT_EQ(derived->GetValue(-1), nullptr);
  EXPECT_EQ(derived->GetValue(99), nullptr);
  EXPECT_EQ(derived->GetValue(std::string("x")), nullptr);
}

}  // namespace
}  // namespace svmscore::transform
