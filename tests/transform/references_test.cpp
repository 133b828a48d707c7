// Which names mean what, in which order fields are computed, and which are.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "host/score_dict_var.h"
#include "host/transform/program.h"
#include "tests/transform/call_text.h"
#include "tests/transform/fixture.h"

namespace svmscore::transform {
namespace {

using ::testing::ElementsAre;

std::string Derived(const std::string& name, const std::string& call) {
  return DerivedField(name, "double", CallToXml(call));
}

std::string Local(const std::string& fields) {
  return "<LocalTransformations>" + fields + "</LocalTransformations>\n";
}

std::string Global(const std::string& fields) {
  return "<TransformationDictionary>" + fields + "</TransformationDictionary>\n";
}

std::string MiningField(const std::string& name) {
  return "<MiningField name=\"" + name + "\"/>";
}

TEST(References, ResolveInAnyOrder) {
  const Loaded loaded(
      Document(DataField("x", "double"),
               Derived("c", "+(b, a)") + Derived("b", "*(a, 2)") + Derived("a", "+(x, 1)")));
  EXPECT_EQ(loaded.Derive("c", {{"x", "4"}}), "15");
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
  const std::string fields = DataField("x", "double") + DataField("y", "double");
  const std::string local = Local(Derived("used", "+(base, 1)") + Derived("base", "x") +
                                  Derived("unused", "/(y, 0)") + Derived("shown", "*(x, 10)"));
  const std::string output =
      "<Output><OutputField name=\"o\">" + CallToXml("+(shown, 1)") + "</OutputField></Output>";
  const Loaded loaded(ModelDocument(fields,
                                    MiningField("x") + "</MiningSchema>" + output +
                                        "<MiningSchema>" + MiningField("y"),
                                    "", local, "<FieldRef field=\"used\"/>"),
                      "LocalTransformations");
  EXPECT_EQ(loaded.Derive("used", {{"x", "4"}}), "5");
  EXPECT_EQ(loaded.Derive("shown", {{"x", "4"}}), "40");
  EXPECT_EQ(loaded.Derive("unused", {{"x", "4"}, {"y", "1"}}), "missing");
  const auto& needed = loaded.Dictionary().GetProgram().NeededInputs();
  ASSERT_EQ(needed.size(), 1U);
  EXPECT_EQ(needed[0]->GetName(), "x");
}

TEST(References, NeedTheFieldsOfTheMiningSchema) {
  const std::string fields = DataField("x", "double") + DataField("y", "double");
  const auto document = [&](const std::string& field) {
    return ModelDocument(fields, MiningField("x"), "",
                         Local(Derived("a", "x") + Derived("b", "+(y, 1)")),
                         "<FieldRef field=\"" + field + "\"/>");
  };
  EXPECT_EQ(Refusal(document("a"), "LocalTransformations"), "");
  EXPECT_THAT(Refusal(document("b"), "LocalTransformations"),
              ::testing::AllOf(::testing::StartsWith("260313 at element DerivedField, line 7"),
                               ::testing::HasSubstr("field y")));
}

TEST(References, FindLocalFieldsThenInputsThenGlobalOnes) {
  const std::string fields = DataField("x", "double") + DataField("other", "double");
  const std::string doubled = Derived("x", "*(x, 2)") + Derived("d", "+(x, 1)");
  const Loaded local(ModelDocument(fields, MiningField("x"), "", Local(doubled),
                                   "<FieldRef field=\"d\"/><FieldRef field=\"x\"/>"),
                     "LocalTransformations");
  // A field that is computed from its own name means the input.
  EXPECT_EQ(local.Derive("x", {{"x", "4"}}), "8");
  EXPECT_EQ(local.Derive("d", {{"x", "4"}}), "9");
  EXPECT_TRUE(local.Inputs()->FindVar("x")->IsHiddenByDerived());
  EXPECT_FALSE(local.Inputs()->FindVar("other")->IsHiddenByDerived());

  const Loaded global(ModelDocument(fields, MiningField("x"), Global(doubled), "",
                                    "<FieldRef field=\"d\"/><FieldRef field=\"x\"/>"));
  EXPECT_EQ(global.Derive("d", {{"x", "4"}}), "5");
  EXPECT_FALSE(global.Inputs()->FindVar("x")->IsHiddenByDerived());

  // An input that is none of the model's is not seen.
  const Loaded unseen(ModelDocument(fields, MiningField("x"),
                                    Global(Derived("other", "*(x, 2)") + Derived("d", "other")), "",
                                    "<FieldRef field=\"d\"/>"));
  EXPECT_EQ(unseen.Derive("d", {{"x", "4"}}), "8");
  EXPECT_TRUE(unseen.Inputs()->FindVar("other")->IsHiddenByDerived());

  // One that was moved out of the model's own transformations stays local.
  std::string moved = doubled;
  moved.insert(moved.find(" name="), " x-scope=\"local\"");
  const Loaded marked(
      ModelDocument(fields, MiningField("x"), Global(moved), "", "<FieldRef field=\"d\"/>"));
  EXPECT_EQ(marked.Derive("d", {{"x", "4"}}), "9");
}

TEST(References, TellWhatAFieldEncodes) {
  const std::string map =
      "<MapValues outputColumn=\"o\"><FieldColumnPair field=\"t\" column=\"i\"/><InlineTable>"
      "<row><i>u</i><o>1</o></row><row><i>v</i><o>2</o></row></InlineTable></MapValues>";
  const Loaded loaded(
      Document(DataField("t", "string") + DataField("x", "double"),
               DerivedField("is_u", "double", "<NormDiscrete field=\"t\" value=\"u\"/>") +
                   DerivedField("number", "double", map) + Derived("plain", "x") +
                   Derived("sum", "+(x, plain)") + Derived("chained", "is_u")));
  const auto source = [&](const std::string& name) {
    const auto* var = loaded.Dictionary().FindDerived(name);
    std::string text = var->GetFieldName();
    for (const auto* value : var->GetAllEncodedValues()) text += " " + value->GetText();
    return text;
  };
  EXPECT_EQ(source("is_u"), "t u");
  EXPECT_EQ(source("number"), "t u v");
  EXPECT_EQ(source("plain"), "x");
  EXPECT_EQ(source("sum"), "");
  EXPECT_EQ(source("chained"), "");
  EXPECT_EQ(loaded.Dictionary().FindDerived("x"), nullptr);
}

TEST(References, LearnCategoriesFromPredictors) {
  const Loaded loaded(
      ModelDocument(DataField("t", "string"), MiningField("t"), "",
                    Local(DerivedField("size", "string", "<FieldRef field=\"t\"/>")),
                    "<CategoricalPredictor name=\"size\" value=\"s\" coefficient=\"1\"/>"
                    "<CategoricalPredictor name=\"size\" value=\"m\" coefficient=\"1\"/>"),
      "LocalTransformations");
  const auto* var = loaded.Dictionary().FindDerived("size");
  const auto record = loaded.Record({{"t", "m"}});
  const auto derived = loaded.Dictionary().GetValuesForDerivedVars(record.get(), loaded.Inputs());
  EXPECT_EQ(var->GetCategoryIndex(derived->GetDerived(*var)), 1);
  EXPECT_TRUE(var->IsValidValue(derived->GetDerived(*var)));
}

TEST(References, OrderDerivedOrdinalFields) {
  const std::string ordinal =
      "<DerivedField name=\"g\" optype=\"ordinal\" dataType=\"string\"><FieldRef field=\"t\"/>"
      "<Value value=\"low\"/><Value value=\"high\"/></DerivedField>";
  const Loaded loaded(
      Document(DataField("t", "string"),
               DerivedField("d", "boolean", CallToXml("lessThan(g, 'high')")) + ordinal));
  EXPECT_THAT(loaded.DeriveAll("d", {{{"t", "low"}}, {{"t", "high"}}, {{"t", "mid"}}}),
              ElementsAre("1", "0", "missing"));
}

TEST(DerivedRecord, IsReadByPositionAndByName) {
  const Loaded loaded(
      Document(DataField("x", "double"), Derived("b", "+(a, 1)") + Derived("a", "x")));
  const auto record = loaded.Record({{"x", "4"}}, false);
  const auto derived = loaded.Dictionary().GetValuesForDerivedVars(record.get(), loaded.Inputs());
  EXPECT_TRUE(derived->IsIndexedByPosition());
  const int position = derived->GetPosition("b");
  EXPECT_EQ(Show(derived->GetValue(position)), "5");
  EXPECT_EQ(Show(derived->GetValue(std::string("a"))), "4");
  EXPECT_EQ(derived->GetPosition("x"), -1);
  EXPECT_EQ(derived->GetValue(-1), nullptr);
  EXPECT_EQ(derived->GetValue(99), nullptr);
  EXPECT_EQ(derived->GetValue(std::string("x")), nullptr);
}

}  // namespace
}  // namespace svmscore::transform
