// Record batches of the Arrow C Data Interface in and out, by a producer and a consumer of our own.
#include "tests/capi/arrow_batch.h"

#include <cerrno>
#include <cmath>
#include <functional>
#include <limits>

#include <gtest/gtest.h>

#include "tests/process/case_set.h"

namespace svmscore_test {
namespace {

const std::string kMixed = PROJECT_FOLDER "/tests/process/data/mixed.pmml";
const std::string kThree = PROJECT_FOLDER "/tests/app/data/three.pmml";

// What scoring a batch gives; the failure where it fails.
struct Scored {
  Rows rows;
  Failure failure;
};

Scored ScoreBatch(svmscore_scorer* scorer, const ArrowBatch& batch) {
  Scored scored;
  ArrowSchema schema{};
  ArrowArray array{};
  svmscore_error* error = nullptr;
  const int kind =
      svmscore_score_arrow(scorer, &batch.schema, &batch.array, &schema, &array, &error);
  scored.failure = FailureOf(error);
  EXPECT_EQ(scored.failure.kind, kind);
  EXPECT_EQ(kind == SVMSCORE_OK, schema.release != nullptr);
  EXPECT_EQ(kind == SVMSCORE_OK, array.release != nullptr);
  EXPECT_EQ(batch.released, 0) << "the batch stays the caller's";
  if (kind != SVMSCORE_OK) return scored;
  scored.rows = RowsOf(schema, array);
  schema.release(&schema);
  array.release(&array);
  EXPECT_EQ(schema.release, nullptr);
  EXPECT_EQ(array.release, nullptr);
  return scored;
}

class Arrow : public testing::TestWithParam<std::string> {};

TEST_P(Arrow, ColumnsOfEveryTypeScoreAsTexts) {
  const Model model = LoadFile(GetParam());
  svmscore_scorer_options options = SVMSCORE_INIT(svmscore_scorer_options);
  options.decisions = 1;
  const Scorer scorer = NewScorer(model.get(), &options);
  options.category_codes = 1;
  const Scorer coding = NewScorer(model.get(), &options);
  for (const bool odd : {false, true}) {
    // More rows than a block has, once for each document; wide documents take too long that way.
    const bool many = !odd && CasesFor(model.get(), 1, odd).front().size() <= 10;
    const Rows cases = CasesFor(model.get(), many ? 700 : 40, odd);
    const Rows expected = Score(scorer.get(), Columns(cases, Form::kTexts));
    for (const char* format : {"u", "U", "vu", "g", "f", "e", "l", "i", "s", "c", "L", "I", "S",
                               "C", "n", "dictionary"}) {
      for (const auto& [before, skipped] : {std::pair(0, 0), std::pair(3, 0), std::pair(5, 11)}) {
        const ArrowBatch batch(cases, {format, before}, skipped);
        EXPECT_EQ(Difference(ScoreBatch(scorer.get(), batch).rows, expected), "")
            << format << " at " << before << " and " << skipped;
        EXPECT_EQ(Difference(ScoreBatch(coding.get(), batch).rows, expected), "") << format;
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Documents, Arrow, testing::ValuesIn(Documents()), NameOfDocument);

// Rows that the batch itself calls missing have no value in any column.
TEST(ArrowBatches, MayMissWholeRows) {
  const Model model = LoadFile(kThree);
  const Scorer scorer = NewScorer(model.get());
  Rows cases = CasesFor(model.get(), 3, false);
  ArrowBatch batch(cases, {"g"});
  const std::uint8_t validity = 0b101;
  const void* buffers[] = {&validity};
  batch.array.buffers = buffers;
  for (std::string& cell : cases[2]) cell.clear();
  EXPECT_EQ(Difference(ScoreBatch(scorer.get(), batch).rows,
                       Score(scorer.get(), Columns(cases, Form::kTexts))),
            "");
}

TEST(ArrowBatches, OfNothingAreScored) {
  const Model model = LoadFile(kThree);
  const Scorer scorer = NewScorer(model.get());
  ArrowBatch batch(CasesFor(model.get(), 2), {"u"});
  batch.array.length = 0;
  EXPECT_EQ(ScoreBatch(scorer.get(), batch).rows.size(), 1U);
}

TEST(ArrowBatches, ThatAreNotWholeAreRefused) {
  const Model model = LoadFile(kThree);
  const Scorer scorer = NewScorer(model.get());
  const Rows cases = CasesFor(model.get(), 20, false);
  struct Damage {
    const char* what;
    const char* format;
    int kind;
    const char* place;
    std::function<void(ArrowBatch&)> damage;
  };
  static std::int32_t falling[64] = {5, 3};
  static std::int8_t codes[64] = {100};
  static std::int32_t views[256] = {100, 0, 7, 0};
  static std::int32_t far_views[256] = {100, 0, 1, std::numeric_limits<std::int32_t>::max()};
  const auto width = [](ArrowBatch& batch) -> ArrowArray& {
    return *batch.array.children[batch.Find("width")];
  };
  const Damage damages[] = {
      {"released schema", "g", SVMSCORE_ARGUMENT, "schema",
       [](ArrowBatch& b) { b.schema.release = nullptr; }},
      {"released batch", "g", SVMSCORE_ARGUMENT, "batch",
       [](ArrowBatch& b) { b.array.release = nullptr; }},
      {"released column", "g", SVMSCORE_TABLE, "width",
       [&](ArrowBatch& b) { width(b).release = nullptr; }},
      {"no struct", "g", SVMSCORE_ARGUMENT, "schema", [](ArrowBatch& b) { b.schema.format = "g"; }},
      {"fewer columns", "g", SVMSCORE_ARGUMENT, "batch",
       [](ArrowBatch& b) { --b.array.n_children; }},
      {"column null", "g", SVMSCORE_ARGUMENT, "batch",
       [](ArrowBatch& b) { b.array.children[0] = nullptr; }},
      {"negative length", "g", SVMSCORE_ARGUMENT, "batch",
       [](ArrowBatch& b) { b.array.length = -1; }},
      {"short column", "g", SVMSCORE_TABLE, "width", [&](ArrowBatch& b) { --width(b).length; }},
      {"negative offset", "g", SVMSCORE_TABLE, "width",
       [&](ArrowBatch& b) { width(b).offset = -1; }},
      {"offset beyond memory", "g", SVMSCORE_TABLE, "width",
       [&](ArrowBatch& b) { width(b).offset = std::numeric_limits<std::int64_t>::max(); }},
      {"no buffers", "g", SVMSCORE_TABLE, "width", [&](ArrowBatch& b) { width(b).n_buffers = 1; }},
      {"buffers null", "g", SVMSCORE_TABLE, "width",
       [&](ArrowBatch& b) { width(b).buffers = nullptr; }},
      {"data null", "g", SVMSCORE_TABLE, "width",
       [&](ArrowBatch& b) { width(b).buffers[1] = nullptr; }},
      {"offsets null", "u", SVMSCORE_TABLE, "width",
       [&](ArrowBatch& b) { width(b).buffers[1] = nullptr; }},
      {"falling offsets", "u", SVMSCORE_TABLE, "width",
       [&](ArrowBatch& b) { width(b).buffers[1] = falling; }},
      {"code out of range", "dictionary", SVMSCORE_TABLE, "width",
       [&](ArrowBatch& b) { width(b).buffers[1] = codes; }},
      {"dictionary null", "dictionary", SVMSCORE_TABLE, "width",
       [&](ArrowBatch& b) { width(b).dictionary = nullptr; }},
      {"dictionary released", "dictionary", SVMSCORE_TABLE, "width",
       [&](ArrowBatch& b) { width(b).dictionary->release = nullptr; }},
      {"view of no buffer", "vu", SVMSCORE_TABLE, "width",
       [&](ArrowBatch& b) { width(b).buffers[1] = views; }},
      {"view beyond its buffer", "vu", SVMSCORE_TABLE, "width",
       [&](ArrowBatch& b) { width(b).buffers[1] = far_views; }},
  };
  for (const Damage& damage : damages) {
    ArrowBatch batch(cases, {damage.format});
    damage.damage(batch);
    const Failure failure = ScoreBatch(scorer.get(), batch).failure;
    EXPECT_EQ(failure.kind, damage.kind) << damage.what << ": " << failure.message;
    EXPECT_EQ(failure.place, damage.place) << damage.what << ": " << failure.message;
  }
}

TEST(ArrowBatches, WithTypesThatAreNotReadAreRefusedWhereTheModelReadsThem) {
  const Model model = LoadFile(kThree);
  const Scorer scorer = NewScorer(model.get());
  Rows cases = CasesFor(model.get(), 20, false);
  for (auto& row : cases) row.push_back(row == cases[0] ? "unknown" : "1");
  for (const char* format : {"+l", "+L", "+w:3", "+s", "+m", "+ud:0", "+r", "d:10,2", "z", "w:4",
                             "tDs", "tiM", "tss:CET", "?"}) {
    ArrowBatch batch(cases, {"g"});
    batch.schema.children[batch.Find("unknown")]->format = format;
    EXPECT_EQ(ScoreBatch(scorer.get(), batch).failure.message, "") << format;
    batch.schema.children[batch.Find("width")]->format = format;
    const Failure failure = ScoreBatch(scorer.get(), batch).failure;
    EXPECT_EQ(failure.kind, SVMSCORE_TABLE);
    EXPECT_EQ(failure.place, "width") << failure.message;
  }
  // Nor is a dictionary looked at that the model does not read.
  ArrowBatch coded(cases, {"dictionary"});
  const std::size_t unknown = coded.Find("unknown");
  coded.schema.children[unknown]->dictionary->format = "+s";
  coded.array.children[unknown]->dictionary->n_buffers = 1;
  EXPECT_EQ(ScoreBatch(scorer.get(), coded).failure.message, "");
  // A date is no number, and a field of numbers takes none.
  ArrowBatch dated(cases, {"i"});
  dated.schema.children[dated.Find("width")]->format = "tdD";
  EXPECT_EQ(ScoreBatch(scorer.get(), dated).failure.place, "width");
}

// As texts, that a field of texts shows where it does not list them.
TEST(ArrowBatches, HoldMomentsToTheLastDigit) {
  const Model model = LoadFile(kThree);
  svmscore_scorer_options options = SVMSCORE_INIT(svmscore_scorer_options);
  options.reasons = 1;
  const Scorer scorer = NewScorer(model.get(), &options);
  struct Case {
    const char* format;
    std::int64_t value;
    const char* text;
  };
  const Case cases[] = {
      {"tdD", 19782, "2024-02-29"},
      {"tdD", -1, "1969-12-31"},
      {"tdm", -1, "1969-12-31"},
      {"tts", 86399, "23:59:59"},
      {"ttm", 50, "00:00:00.05"},
      {"ttu", 43200000001, "12:00:00.000001"},
      {"ttn", 7, "00:00:00.000000007"},
      {"tss:UTC", 1709208000, "2024-02-29T12:00:00"},
      {"tsm:", 1709208000123, "2024-02-29T12:00:00.123"},
      {"tsu:", -1, "1969-12-31T23:59:59.999999"},
      {"tsn:Z", 1709208000120000000, "2024-02-29T12:00:00.12"},
      {"tsn:", 1709208000123456789, "2024-02-29T12:00:00.123456789"},
  };
  for (const auto& [format, value, text] : cases) {
    ArrowBatch batch({{"width", "height", "colour"}, {"1", "1", "1"}}, {"l"});
    const std::size_t colour = batch.Find("colour");
    const auto narrow = static_cast<std::int32_t>(value);
    const bool is_narrow = std::string_view("tdD tts ttm").find(format) != std::string::npos;
    batch.schema.children[colour]->format = format;
    batch.array.children[colour]->buffers[1] =
        is_narrow ? static_cast<const void*>(&narrow) : &value;
    EXPECT_EQ(
        ScoreBatch(scorer.get(), batch).rows.at(1).back(),
        std::string("colour: \"") + text + "\" is not one of its 2 categories: \"red\", \"blue\"");
  }
}

TEST(ArrowBatches, LeaveTheScorerTheNamesThatItTold) {
  const Model model = LoadFile(kThree);
  const Scorer scorer = NewScorer(model.get());
  svmscore_output before = SVMSCORE_INIT(svmscore_output);
  svmscore_output after = before;
  ASSERT_EQ(svmscore_scorer_get_output(scorer.get(), 0, &before, nullptr), SVMSCORE_OK);
  ScoreBatch(scorer.get(), ArrowBatch(CasesFor(model.get(), 2), {"u"}));
  ASSERT_EQ(svmscore_scorer_get_output(scorer.get(), 0, &after, nullptr), SVMSCORE_OK);
  EXPECT_EQ(before.name.data, after.name.data);
  EXPECT_EQ(before.categories, after.categories);
}

TEST(ArrowStreams, AreScoredBatchByBatch) {
  const Model model = LoadFile(kMixed);
  Scorer scorer = NewScorer(model.get());
  const Rows cases = CasesFor(model.get(), 300);
  const Rows expected = Score(scorer.get(), Columns(cases, Form::kTexts));
  for (const bool fails : {false, true}) {
    ArrowBatch first(cases, {"u"});
    ArrowBatch second(cases, {"u", 4}, 2);
    int streams = 0;
    ArrowArrayStream in = StreamOf({&first, &second}, fails, &streams);
    ArrowArrayStream out{};
    Scorer scoring = NewScorer(model.get());
    ASSERT_EQ(svmscore_score_stream(scoring.get(), &in, &out, nullptr), SVMSCORE_OK);
    EXPECT_EQ(in.release, nullptr) << "the stream has moved";
    scoring.reset();
    ArrowSchema schema{};
    ASSERT_EQ(out.get_schema(&out, &schema), 0);
    for (const ArrowBatch* batch : {&first, &second}) {
      ArrowArray array{};
      ASSERT_EQ(out.get_next(&out, &array), 0) << out.get_last_error(&out);
      EXPECT_EQ(batch->released, batch == &first ? 1 : 1)
          << "a batch is released once it is scored";
      EXPECT_EQ(Difference(RowsOf(schema, array), expected), "");
      // A consumer may move columns out of a batch and keep them.
      ArrowArray moved = *array.children[0];
      array.children[0]->release = nullptr;
      array.release(&array);
      EXPECT_GE(moved.length, 300);
      moved.release(&moved);
    }
    ArrowArray end{};
    EXPECT_EQ(out.get_next(&out, &end), fails ? EINVAL : 0);
    EXPECT_EQ(end.release, nullptr);
    EXPECT_STREQ(out.get_last_error(&out),
                 fails ? "the stream of cases fails: the source is broken" : nullptr);
    schema.release(&schema);
    out.release(&out);
    EXPECT_EQ(streams, 1);
    EXPECT_EQ(first.released, 2) << "with the schema";
  }
}

TEST(ArrowStreams, ThatDoNotFitStayTheCallers) {
  const Model model = LoadFile(kThree);
  const Scorer scorer = NewScorer(model.get());
  ArrowBatch batch({{"width", "colour"}, {"1", "red"}}, {"u"});
  int streams = 0;
  ArrowArrayStream in = StreamOf({&batch}, false, &streams);
  ArrowArrayStream out{};
  svmscore_error* error = nullptr;
  EXPECT_EQ(svmscore_score_stream(scorer.get(), &in, &out, &error), SVMSCORE_TABLE);
  EXPECT_NE(FailureOf(error).sentence.find("\"height\""), std::string::npos);
  EXPECT_EQ(out.release, nullptr);
  ASSERT_NE(in.release, nullptr);
  EXPECT_EQ(streams, 0);
  in.release(&in);
  EXPECT_EQ(svmscore_score_stream(scorer.get(), &in, &out, &error), SVMSCORE_ARGUMENT);
  EXPECT_EQ(FailureOf(error).place, "cases");
}

}  // namespace
}  // namespace svmscore_test
