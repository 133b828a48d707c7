// What the C interface refuses, and how it says so.
#include <cstring>
#include <functional>
#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/app/temporary_folder.h"
#include "tests/capi/columns.h"
#include "tests/process/case_set.h"

namespace svmscore_test {
namespace {

using testing::HasSubstr;

const std::string kThree = PROJECT_FOLDER "/tests/app/data/three.pmml";

Failure LoadFailure(const std::string& path, const svmscore_load_options* options = nullptr) {
  svmscore_model* model = nullptr;
  svmscore_error* error = nullptr;
  const int kind = svmscore_load_file(path.data(), path.size(), options, &model, &error);
  const Failure failure = FailureOf(error);
  EXPECT_EQ(failure.kind, kind);
  EXPECT_EQ(model == nullptr, kind != SVMSCORE_OK);
  svmscore_model_free(model);
  return failure;
}

// The document of three.pmml with `from` replaced by `to`.
std::string Edited(const std::string& from, const std::string& to) {
  std::string document = svmscore::app::ReadFile(kThree);
  const std::size_t at = document.find(from);
  EXPECT_NE(at, std::string::npos);
  return document.replace(at, from.size(), to);
}

TEST(CErrors, OfDocumentsHaveCodeSentencePlaceAndRemedy) {
  const std::string document = Edited("<FieldRef field=\"width\"/>", "<FieldRef field=\"widht\"/>");
  svmscore_model* model = nullptr;
  svmscore_error* error = nullptr;
  svmscore_load_options options = SVMSCORE_INIT(svmscore_load_options);
  options.name = "doc\nument";
  options.name_length = SVMSCORE_NUL_ENDED;
  ASSERT_EQ(svmscore_load_memory(document.data(), document.size(), &options, &model, &error),
            SVMSCORE_DOCUMENT);
  const Failure failure = FailureOf(error);
  EXPECT_EQ(failure.code, 260311);
  EXPECT_THAT(failure.sentence, HasSubstr("widht"));
  EXPECT_EQ(failure.sentence.find("line"), std::string::npos) << failure.sentence;
  EXPECT_EQ(failure.place, "element FieldRef, line 22");
  EXPECT_NE(failure.remedy, "");
  EXPECT_THAT(failure.message, testing::StartsWith("[260311] "));
  EXPECT_THAT(failure.message, HasSubstr(" (element FieldRef, line 22); did you mean \"width\"? C" +
                                         failure.remedy.substr(1)));
  // Without a place for it an error is told by its kind alone.
  EXPECT_EQ(svmscore_load_memory(document.data(), document.size(), nullptr, &model, nullptr),
            SVMSCORE_DOCUMENT);
}

TEST(CErrors, OfLoadingAreOfTheirKinds) {
  EXPECT_EQ(LoadFailure("/no/such/file").code, 260301);
  EXPECT_EQ(LoadFailure("/no/such/file").kind, SVMSCORE_SYSTEM);
  EXPECT_EQ(LoadFailure("/").kind, SVMSCORE_SYSTEM);
  EXPECT_EQ(LoadFailure("").place, "path");
  EXPECT_EQ(LoadFailure(std::string("a\0b", 3)).place, "path");
  EXPECT_EQ(LoadFailure(PROJECT_FOLDER "/README.md").kind, SVMSCORE_DOCUMENT);
  svmscore_load_options options = SVMSCORE_INIT(svmscore_load_options);
  options.plugin_path = "/no/such/plugin.so";
  options.plugin_path_length = SVMSCORE_NUL_ENDED;
  EXPECT_EQ(LoadFailure(kThree, &options).code, 260305);
  options = SVMSCORE_INIT(svmscore_load_options);
  options.mode = 7;
  EXPECT_EQ(LoadFailure(kThree, &options).place, "options.mode");
  options.mode = SVMSCORE_DEFAULT;
  options.missing_policy = -1;
  EXPECT_EQ(LoadFailure(kThree, &options).place, "options.missing_policy");
  options.missing_policy = SVMSCORE_MISSING_AS_MODEL;
  svmscore_limit limit = {"vectors", 2};
  options.limits = &limit;
  options.limit_count = 1;
  EXPECT_EQ(LoadFailure(kThree, &options).code, 260318);
  limit.name = "patience";
  EXPECT_THAT(LoadFailure(kThree, &options).sentence, HasSubstr("patience"));
  options.limits = nullptr;
  EXPECT_EQ(LoadFailure(kThree, &options).place, "options.limits");
  options.limit_count = 0;
  options.size = 12;
  EXPECT_EQ(LoadFailure(kThree, &options).place, "options");
  options.size = std::numeric_limits<std::size_t>::max();
  EXPECT_EQ(LoadFailure(kThree, &options).place, "options");
}

TEST(CErrors, ModesAndRemarksAreThoseOfTheProgram) {
  const std::string machine = "<SupportVector vectorId=\"w\"/></SupportVectors>";
  const svmscore::app::TemporaryFolder folder;
  const std::string path =
      folder.Write("model", Edited(machine, "<SupportVector vectorId=\"h\"/>" + machine));
  std::vector<std::string> remarks;
  svmscore_load_options options = SVMSCORE_INIT(svmscore_load_options);
  options.remark_context = &remarks;
  options.remark = [](void* context, const char* text, std::size_t length) {
    static_cast<std::vector<std::string>*>(context)->emplace_back(text, length);
  };
  const Model model = LoadFile(path, &options);
  ASSERT_EQ(remarks.size(), 2U);
  EXPECT_THAT(remarks[1], testing::StartsWith("error: line 32, Coefficients: "));
  svmscore_model_facts facts = SVMSCORE_INIT(svmscore_model_facts);
  ASSERT_EQ(svmscore_model_get_facts(model.get(), &facts, nullptr), SVMSCORE_OK);
  ASSERT_EQ(facts.remark_count, remarks.size());
  svmscore_text remark{};
  for (std::size_t i = 0; i < remarks.size(); ++i) {
    ASSERT_EQ(svmscore_model_get_remark(model.get(), i, &remark, nullptr), SVMSCORE_OK);
    EXPECT_EQ(StringOf(remark), remarks[i]);
  }
  options.mode = SVMSCORE_STRICT;
  EXPECT_EQ(LoadFailure(path, &options).kind, SVMSCORE_DOCUMENT);
  // An exception of a callback does not cross either.
  options.mode = SVMSCORE_DEFAULT;
  options.remark = [](void*, const char*, std::size_t) { throw 1; };
  EXPECT_EQ(LoadFailure(path, &options).kind, SVMSCORE_INTERNAL);
}

TEST(CErrors, OfArgumentsNameThem) {
  const Model model = LoadFile(kThree);
  const Scorer scorer = NewScorer(model.get());
  svmscore_model* loaded = nullptr;
  svmscore_scorer* made = nullptr;
  svmscore_table table = SVMSCORE_INIT(svmscore_table);
  svmscore_column column = SVMSCORE_INIT(svmscore_column);
  svmscore_value value{};
  double number = 0.0;
  svmscore_text text{};
  ArrowSchema schema{};
  ArrowArray array{};
  ArrowArrayStream stream{};
  char* json = nullptr;
  using Call = std::function<int(svmscore_error**)>;
  const std::pair<const char*, Call> calls[] = {
      {"path", [&](auto** e) { return svmscore_load_file(nullptr, 3, nullptr, &loaded, e); }},
      {"model", [&](auto** e) { return svmscore_load_file("a", 1, nullptr, nullptr, e); }},
      {"data", [&](auto** e) { return svmscore_load_memory(nullptr, 9, nullptr, &loaded, e); }},
      {"data_size",
       [&](auto** e) {
         return svmscore_load_memory("<PMML/>", SVMSCORE_NUL_ENDED, nullptr, &loaded, e);
       }},
      {"model", [&](auto** e) { return svmscore_scorer_new(nullptr, nullptr, &made, e); }},
      {"scorer", [&](auto** e) { return svmscore_scorer_new(model.get(), nullptr, nullptr, e); }},
      {"facts", [&](auto** e) { return svmscore_model_get_facts(model.get(), nullptr, e); }},
      {"input", [&](auto** e) { return svmscore_model_get_input(model.get(), 0, nullptr, e); }},
      {"index", [&](auto** e) { return svmscore_model_get_input(model.get(), 99, nullptr, e); }},
      {"machine", [&](auto** e) { return svmscore_model_get_machine(model.get(), 0, nullptr, e); }},
      {"index", [&](auto** e) { return svmscore_model_get_category(model.get(), 3, &text, e); }},
      {"index", [&](auto** e) { return svmscore_model_get_remark(model.get(), 0, &text, e); }},
      {"index", [&](auto** e) { return svmscore_scorer_get_output(scorer.get(), 99, nullptr, e); }},
      {"output", [&](auto** e) { return svmscore_scorer_get_output(scorer.get(), 0, nullptr, e); }},
      {"scorer", [&](auto** e) { return svmscore_score(nullptr, &column, 1, 1, &table, e); }},
      {"columns", [&](auto** e) { return svmscore_score(scorer.get(), nullptr, 1, 1, &table, e); }},
      {"table", [&](auto** e) { return svmscore_score(scorer.get(), &column, 1, 0, nullptr, e); }},
      {"scorer", [&](auto** e) { return svmscore_score_case(nullptr, &value, 1, &value, 1, e); }},
      {"inputs",
       [&](auto** e) { return svmscore_score_case(scorer.get(), nullptr, 1, &value, 1, e); }},
      {"outputs",
       [&](auto** e) { return svmscore_score_numbers(scorer.get(), &number, 1, nullptr, 1, e); }},
      {"json", [&](auto** e) { return svmscore_describe(model.get(), nullptr, nullptr, e); }},
      {"model", [&](auto** e) { return svmscore_verify(nullptr, nullptr, &json, nullptr, e); }},
      {"data",
       [&](auto** e) {
         return svmscore_doctor_memory(nullptr, 1, nullptr, nullptr, &json, nullptr, e);
       }},
      {"batch",
       [&](auto** e) {
         return svmscore_score_arrow(scorer.get(), &schema, nullptr, &schema, &array, e);
       }},
      {"scored",
       [&](auto** e) { return svmscore_score_stream(scorer.get(), &stream, nullptr, e); }},
  };
  for (const auto& [place, call] : calls) {
    svmscore_error* error = nullptr;
    EXPECT_EQ(call(&error), SVMSCORE_ARGUMENT) << place;
    EXPECT_EQ(FailureOf(error).place, place);
    EXPECT_EQ(call(nullptr), SVMSCORE_ARGUMENT) << place;
  }
  svmscore_model_free(nullptr);
  svmscore_scorer_free(nullptr);
  svmscore_error_free(nullptr);
  svmscore_text_free(nullptr);
  EXPECT_EQ(svmscore_error_kind(nullptr), SVMSCORE_OK);
  EXPECT_EQ(StringOf(svmscore_error_message(nullptr)), "");
  EXPECT_EQ(svmscore_scorer_output_count(nullptr), 0U);
}

TEST(CErrors, OfColumnsNameThem) {
  const Model model = LoadFile(kThree);
  const Scorer scorer = NewScorer(model.get());
  const Rows cases = CasesFor(model.get(), 20, false);
  static const std::int64_t huge_offsets[64] = {0, std::numeric_limits<std::int64_t>::max()};
  static const std::int32_t bad_codes[64] = {0, 77};
  struct Damage {
    const char* what;
    Form form;
    int kind;
    const char* place;
    std::function<void(svmscore_column&)> damage;
  };
  const Damage damages[] = {
      {"none", Form::kNumbers, SVMSCORE_OK, "", [](auto&) {}},
      {"absent", Form::kNumbers, SVMSCORE_TABLE, "width",
       [](auto& c) {
         c.name = "wide";
         c.name_length = 4;
       }},
      {"size", Form::kNumbers, SVMSCORE_ARGUMENT, "columns", [](auto& c) { c.size += 8; }},
      {"type", Form::kNumbers, SVMSCORE_TABLE, "width", [](auto& c) { c.type = 99; }},
      {"length", Form::kNumbers, SVMSCORE_TABLE, "width", [](auto& c) { --c.length; }},
      {"data null", Form::kNumbers, SVMSCORE_TABLE, "width", [](auto& c) { c.data = nullptr; }},
      {"data short", Form::kNumbers, SVMSCORE_TABLE, "width", [](auto& c) { --c.data_size; }},
      {"data unknown", Form::kNumbers, SVMSCORE_OK, "",
       [](auto& c) { c.data_size = SVMSCORE_UNKNOWN_SIZE; }},
      {"stride", Form::kNumbers, SVMSCORE_TABLE, "width", [](auto& c) { c.stride = 9; }},
      {"stride of all memory", Form::kNumbers, SVMSCORE_TABLE, "width",
       [](auto& c) { c.stride = std::numeric_limits<std::size_t>::max() / 2; }},
      {"offset", Form::kNumbers, SVMSCORE_TABLE, "width", [](auto& c) { c.offset = 1; }},
      {"offset of all memory", Form::kNumbers, SVMSCORE_TABLE, "width",
       [](auto& c) { c.offset = std::numeric_limits<std::size_t>::max() - 3; }},
      {"validity short", Form::kNumbers, SVMSCORE_TABLE, "width",
       [](auto& c) {
         c.validity = static_cast<const std::uint8_t*>(c.data);
         c.validity_size = 2;
       }},
      {"texts with a stride", Form::kTexts, SVMSCORE_TABLE, "width", [](auto& c) { c.stride = 8; }},
      {"offsets null", Form::kTexts, SVMSCORE_TABLE, "width", [](auto& c) { c.offsets = nullptr; }},
      {"offsets short", Form::kTexts, SVMSCORE_TABLE, "width", [](auto& c) { --c.offsets_size; }},
      {"texts short", Form::kTexts, SVMSCORE_TABLE, "width", [](auto& c) { --c.data_size; }},
      {"offsets far", Form::kLongTexts, SVMSCORE_TABLE, "width",
       [](auto& c) { c.offsets = huge_offsets; }},
      {"no dictionary", Form::kDictionary, SVMSCORE_TABLE, "width",
       [](auto& c) { c.dictionary = nullptr; }},
      {"dictionary of itself", Form::kDictionary, SVMSCORE_TABLE, "width",
       [](auto& c) { c.dictionary = &c; }},
      {"codes of texts", Form::kDictionary, SVMSCORE_TABLE, "width",
       [](auto& c) { c.code_type = SVMSCORE_UTF8; }},
      {"code", Form::kDictionary, SVMSCORE_TABLE, "width", [](auto& c) { c.data = bad_codes; }},
  };
  for (const Damage& damage : damages) {
    Columns columns(cases, damage.form);
    for (svmscore_column& column : columns.views) {
      if (std::string(column.name, column.name_length) == "width") damage.damage(column);
    }
    svmscore_table table = SVMSCORE_INIT(svmscore_table);
    svmscore_error* error = nullptr;
    const int kind = svmscore_score(scorer.get(), columns.views.data(), columns.views.size(),
                                    columns.rows, &table, &error);
    const Failure failure = FailureOf(error);
    EXPECT_EQ(kind, damage.kind) << damage.what << ": " << failure.message;
    EXPECT_EQ(failure.place, damage.place) << damage.what << ": " << failure.message;
  }
  Columns columns(cases, Form::kNumbers);
  columns.views.push_back(columns.views[0]);
  svmscore_table table = SVMSCORE_INIT(svmscore_table);
  svmscore_error* error = nullptr;
  EXPECT_EQ(svmscore_score(scorer.get(), columns.views.data(), columns.views.size(), columns.rows,
                           &table, &error),
            SVMSCORE_TABLE);
  const Failure twice = FailureOf(error);
  EXPECT_EQ(twice.place, std::string(columns.views[0].name, columns.views[0].name_length));
  EXPECT_EQ(twice.message, "the table names the column \"" + twice.place + "\" twice");
}

// Missing values take no memory, but their results would.
TEST(CErrors, OfMoreRowsThanMemoryHoldsAreOfMemory) {
  const Model model = LoadFile(PROJECT_FOLDER "/tests/app/data/line.pmml");
  const Scorer scorer = NewScorer(model.get());
  for (const std::size_t rows : {SIZE_MAX, SIZE_MAX - 63, SIZE_MAX / 8}) {
    svmscore_column column = SVMSCORE_INIT(svmscore_column);
    column.name = "x";
    column.name_length = 1;
    column.length = rows;
    svmscore_table table = SVMSCORE_INIT(svmscore_table);
    EXPECT_EQ(svmscore_score(scorer.get(), &column, 1, rows, &table, nullptr), SVMSCORE_MEMORY);
  }
}

// A struct of a later library has more members: where they are all 0 nothing is lost.
TEST(CErrors, StructsMayBeLongerThanTheLibraryKnows) {
  const Model model = LoadFile(kThree);
  const Scorer scorer = NewScorer(model.get());
  const Columns columns(CasesFor(model.get(), 20), Form::kNumbers);
  struct Longer {
    svmscore_column column;
    std::uint64_t later[3];
  };
  std::vector<Longer> longer;
  for (svmscore_column column : columns.views) {
    column.size = sizeof(Longer);
    longer.push_back({column, {}});
  }
  svmscore_table table = SVMSCORE_INIT(svmscore_table);
  ASSERT_EQ(
      svmscore_score(scorer.get(), &longer[0].column, longer.size(), columns.rows, &table, nullptr),
      SVMSCORE_OK);
  EXPECT_EQ(Difference(RowsOf(table), Score(scorer.get(), columns)), "");
  longer[1].later[2] = 1;
  EXPECT_EQ(
      svmscore_score(scorer.get(), &longer[0].column, longer.size(), columns.rows, &table, nullptr),
      SVMSCORE_ARGUMENT);
}

TEST(CErrors, ThreadsAndChoicesAreChecked) {
  const Model model = LoadFile(kThree);
  const auto place = [&model](const std::function<void(svmscore_scorer_options&)>& set) {
    svmscore_scorer_options options = SVMSCORE_INIT(svmscore_scorer_options);
    set(options);
    svmscore_scorer* scorer = nullptr;
    svmscore_error* error = nullptr;
    EXPECT_EQ(svmscore_scorer_new(model.get(), &options, &scorer, &error), SVMSCORE_ARGUMENT);
    return FailureOf(error).place;
  };
  EXPECT_EQ(place([](auto& options) { options.columns = 3; }), "options.columns");
  EXPECT_EQ(place([](auto& options) { options.threads = -2; }), "options.threads");
  EXPECT_EQ(place([](auto& options) { options.threads = 1 << 20; }), "options.threads");
}

}  // namespace
}  // namespace svmscore_test
