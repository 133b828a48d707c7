// What a process may do around the C interface: threads, fork, dlopen and dlclose, another locale
// of its own, streams of its own.
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include <gtest/gtest.h>

#include "tests/app/temporary_folder.h"
#include "tests/capi/columns.h"
#include "tests/process/case_set.h"

namespace svmscore_test {
namespace {

TEST(CProcess, ThreadsShareAModel) {
  for (const std::string& document : Documents()) {
    const Model model = LoadFile(document);
    const Columns columns(CasesFor(model.get(), 600), Form::kNumbers);
    const Rows expected = Score(NewScorer(model.get()).get(), columns);
    std::atomic<int> agreeing{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
      threads.emplace_back([&, t] {
        svmscore_scorer_options options = SVMSCORE_INIT(svmscore_scorer_options);
        options.threads = t % 2 + 1;
        const Scorer scorer = NewScorer(model.get(), &options);
        char* json = nullptr;
        const bool told = svmscore_describe(model.get(), &json, nullptr, nullptr) == SVMSCORE_OK;
        svmscore_text_free(json);
        json = nullptr;
        svmscore_verify(model.get(), nullptr, &json, nullptr, nullptr);
        svmscore_text_free(json);
        for (int round = 0; round < 3; ++round) {
          if (told && Score(scorer.get(), columns) == expected) ++agreeing;
        }
      });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(agreeing, 12) << document;
  }
}

TEST(CProcess, LoadsAndFreesOnThreads) {
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([] {
      for (int round = 0; round < 5; ++round) {
        for (const std::string& document : Documents()) {
          if (document.find("digits") != std::string::npos) continue;
          Scorer scorer = NewScorer(LoadFile(document).get());  // and the model is freed
          EXPECT_GT(svmscore_scorer_output_count(scorer.get()), 0U);
        }
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

TEST(CProcess, ReadsTheEnvironmentOnce) {
  const std::string document = Documents()[0];
  LoadFile(document);
  for (const char* name : {"SVMSCORE_PLUGIN", "SVMSCORE_ISA", "SVMSCORE_LOG"}) {
    setenv(name, "none", 1);
    LoadFile(document);
    unsetenv(name);
  }
}

// A sanitizer's own threads and memory stand in the way of the following.
#if !defined(SVMSCORE_SANITIZED)

TEST(CProcess, AForkedChildScores) {
  const Model model = LoadFile(Documents()[0]);
  svmscore_scorer_options options = SVMSCORE_INIT(svmscore_scorer_options);
  options.threads = 2;
  const Scorer scorer = NewScorer(model.get(), &options);
  const Columns columns(CasesFor(model.get(), 2000), Form::kNumbers);
  const Rows expected = Score(scorer.get(), columns);
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    const bool same = Score(scorer.get(), columns) == expected &&
                      Score(NewScorer(LoadFile(Documents()[0]).get()).get(), columns) == expected;
    _exit(same ? 0 : 1);
  }
  int status = -1;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(Score(scorer.get(), columns), expected);
}

// Also where another thread was reading the document.
TEST(CProcess, AForkedChildDescribes) {
  const Model model = LoadFile(Documents()[0]);
  const auto describes = [&] {
    char* json = nullptr;
    const int kind = svmscore_describe(model.get(), &json, nullptr, nullptr);
    svmscore_text_free(json);
    return kind == SVMSCORE_OK;
  };
  std::atomic<bool> ends{false};
  std::thread other([&] {
    while (!ends) describes();
  });
  for (int i = 0; i < 20; ++i) {
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      alarm(20);  // ends a child that waits for ever
      _exit(describes() ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    if (status != 0) break;
  }
  ends = true;
  other.join();
}

TEST(CProcess, OpensAndClosesTheLibraryAHundredTimesWithoutGrowing) {
  const std::string command = std::string(DLOPEN_PROGRAM) + " " + SVMSCORE_LIBRARY + " " +
                              PROJECT_FOLDER "/examples/tumour/model.pmml";
  EXPECT_EQ(std::system(command.c_str()), 0);
}

#endif

// Neither the locale, nor signals, nor the standard streams are the library's business.
TEST(CProcess, KeepsWhatIsItsOwn) {
  const svmscore::app::TemporaryFolder folder;
  std::fflush(stdout);
  std::fflush(stderr);
  const int out = dup(1);
  const int err = dup(2);
  FILE* file = std::fopen(folder.Path("out").c_str(), "w");
  dup2(fileno(file), 1);
  dup2(fileno(file), 2);
  const std::string locale = std::setlocale(LC_ALL, nullptr);
  std::vector<struct sigaction> before(32);
  for (int number = 1; number < 32; ++number) {
    sigaction(number, nullptr, &before[static_cast<std::size_t>(number)]);
  }
  for (const std::string& document : Documents()) {
    const Model model = LoadFile(document);
    const Columns columns(CasesFor(model.get(), 50), Form::kTexts);
    Score(NewScorer(model.get()).get(), columns);
    svmscore_error* error = nullptr;
    EXPECT_NE(svmscore_load_file("/no/such", 8, nullptr, nullptr, &error), SVMSCORE_OK);
    svmscore_error_free(error);
    char* json = nullptr;
    EXPECT_EQ(svmscore_doctor_file(document.data(), document.size(), nullptr, nullptr, &json,
                                   nullptr, nullptr),
              SVMSCORE_OK);
    svmscore_text_free(json);
  }
  EXPECT_EQ(std::setlocale(LC_ALL, nullptr), locale);
  for (int number = 1; number < 32; ++number) {
    struct sigaction now {};
    sigaction(number, nullptr, &now);
    EXPECT_EQ(now.sa_handler, before[static_cast<std::size_t>(number)].sa_handler) << number;
  }
  std::fflush(stdout);
  std::fflush(stderr);
  dup2(out, 1);
  dup2(err, 2);
  close(out);
  close(err);
  std::fclose(file);
  EXPECT_EQ(svmscore::app::ReadFile(folder.Path("out")), "");
}

}  // namespace
}  // namespace svmscore_test
