// Expressions outside derived fields.
#include <gtest/gtest.h>

#include <string>

#include "tests/transform/call_text.h"
#include "tests/transform/fixture.h"

namespace svmscore::transform {
namespace {

constexpr FieldType kDouble{DataType::kDouble, 0};
constexpr FieldType kString{DataType::kString, 0};

// An element of its own document, which must stay alive.
struct Snippet {
  explicit Snippet(const std::string& call)
      : document(PmmlDocument::FromText(CallToXml(call), "snippet")) {}
  const Element* Root() const { return document.Dom()->getDocumentElement(); }
  PmmlDocument document;
};

TEST(CaseScope, SeesInputsDerivedFieldsAndAddedValues) {
  const Loaded loaded(Document(DataField("x", "double") + DataField("y", "double"),
                               DerivedField("d", "double", CallToXml("*(x, 2)"))));
  Definitions definitions;
  CaseScope scope(loaded.Inputs(), &loaded.Dictionary());
  const Snippet first("+(+(d, x), y_hat)");
  EXPECT_FALSE(scope.Find("y_hat"));
  const int prediction = scope.AddValue("y_hat", kDouble, false);
  const auto sum = CompileExpression(first.Root(), scope, definitions);
  ASSERT_EQ(scope.NeededInputs().size(), 1U);
  EXPECT_EQ(scope.NeededInputs()[0]->GetName(), "x");
  // A later value hides an earlier meaning from what is compiled after it.
  const int text = scope.AddValue("x", kString, false);
  const Snippet second("concat(x, '!')");
  const auto shout = CompileExpression(second.Root(), scope, definitions);

  CaseValues values(scope);
  for (const double x : {1.0, 3.0}) {
    const auto record = loaded.Record({{"x", std::to_string(x)}});
    const auto derived = loaded.Dictionary().GetValuesForDerivedVars(record.get(), loaded.Inputs());
    values.Begin(*record, derived.get());
    EXPECT_TRUE(values.Evaluate(*sum, kDouble).IsMissing());
    values.Set(prediction, Value::Double(100.0));
    values.Set(text, Value::Text(std::string("alarm")));
    EXPECT_EQ(values.Evaluate(*sum, kDouble).GetNumber(), 3 * x + 100.0);
    EXPECT_EQ(values.Text(values.Evaluate(*sum, kString)), x == 1.0 ? "103" : "109");
    EXPECT_EQ(values.Text(values.Evaluate(*shout, std::nullopt)), "alarm!");
  }
}

TEST(CaseScope, DoesWithoutDictionaries) {
  Definitions definitions;
  CaseScope scope(nullptr, nullptr);
  const int label = scope.AddValue("label", std::nullopt, false);
  const Snippet snippet("if(equal(label, 'b'), 1, 0)");
  const auto expression = CompileExpression(snippet.Root(), scope, definitions);
  const Loaded loaded(Document("", ""));
  const auto record = loaded.Record({});
  CaseValues values(scope);
  values.Begin(*record, nullptr);
  values.Set(label, Value::Text("b"));
  EXPECT_EQ(values.Evaluate(*expression, kDouble).GetNumber(), 1.0);
  values.Set(label, Value::Invalid());
  EXPECT_TRUE(values.Evaluate(*expression, kDouble).IsInvalid());
}

}  // namespace
}  // namespace svmscore::transform
