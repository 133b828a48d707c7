// Which inputs share a player, and which entries it has.
#include "tools/explain/players.h"

#include <gtest/gtest.h>

#include "host/load/loader.h"
#include "host/load/plugin.h"
#include "tests/explain/documents.h"
#include "tools/explain/case_explainer.h"

namespace svmscore::tools {
namespace {

// As "a:0,2 b+c:1 colour:", and " others:3" where there are any.
std::string TextOf(const Players& players) {
  std::string text;
  const auto add = [&text](const std::string& name, const std::vector<std::size_t>& entries) {
    text += (text.empty() ? "" : " ") + name + ':';
    for (const std::size_t entry : entries) {
      text += (text.back() == ':' ? "" : ",") + std::to_string(entry);
    }
  };
  for (const Player& player : players.list) add(player.name, player.entries);
  if (!players.others.empty()) add("others", players.others);
  return text;
}

struct Grouping {
  const char* what;
  std::string document;
  const char* players;
};

class PlayersOf : public testing::TestWithParam<Grouping> {};

TEST_P(PlayersOf, AreInputsThatDoNotMeet) {
  const LoadedModel loaded = LoadModel(Plugin(SVMSCORE_PLUGIN_FILE),
                                       PmmlDocument::FromText(GetParam().document, "test.pmml"));
  EXPECT_EQ(TextOf(ExplainableOf(loaded).players), GetParam().players) << GetParam().what;
}

const std::string kOne = "<Constant>1</Constant>";

INSTANTIATE_TEST_SUITE_P(
    All, PlayersOf,
    testing::Values(
        Grouping{"inputs, one of them twice, and indicators",
                 ExplainedDocument(
                     "", {Ref("c"), Ref("a"), Ref("c"),
                          "<CategoricalPredictor name='colour' value='red' coefficient='1'/>",
                          "<CategoricalPredictor name='colour' value='blue' coefficient='1'/>"}),
                 "a:1 c:0,2 colour:3,4 b: u:"},
        Grouping{"derived of derived, and beside their input", DocumentWithProduct(),
                 "a:0,2 b+c:1 colour:3 u:"},
        Grouping{"several that overlap, in the order of the inputs",
                 ExplainedDocument(Global(Derived("p", Apply("*", Ref("c") + Ref("u"))) +
                                          Derived("q", Apply("+", Ref("c") + Ref("a")))),
                                   {Ref("p"), Ref("b"), Ref("q")}),
                 "a+c+u:0,2 b:1 colour:"},
        Grouping{"a field that only the output uses unites nothing",
                 ExplainedDocument(Global(Derived("p", Apply("*", Ref("a") + Ref("b")))),
                                   {Ref("a"), Ref("b")}, kRadial,
                                   "<Output><OutputField name='o' feature='transformedValue' "
                                   "dataType='double' optype='continuous'><FieldRef field='p'/>"
                                   "</OutputField></Output>"),
                 "a:0 b:1 c: colour: u:"},
        Grouping{"a field of no input, and one of it and an input",
                 ExplainedDocument(Global(Derived("k", kOne) +
                                          Derived("kb", Apply("*", Ref("k") + Ref("b")))),
                                   {Ref("a"), Ref("k"), Ref("kb")}),
                 "a:0 b:2 c: colour: u: others:1"},
        Grouping{"a derived field in the place of the input of its name",
                 ExplainedDocument(Local(Derived("a", Apply("+", Ref("b") + kOne))),
                                   {Ref("a"), Ref("c")}),
                 "b:0 c:1 a: colour: u:"},
        Grouping{"one that is computed from the input of its name, and from another",
                 ExplainedDocument(Local(Derived("a", Apply("*", Ref("a") + Ref("u")))),
                                   {Ref("a"), Ref("c")}),
                 "a+u:0 c:1 b: colour:"}));

}  // namespace
}  // namespace svmscore::tools
