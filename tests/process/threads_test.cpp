// Models loaded and scored in parallel. Under the thread sanitizer this also tests that objects are
// shared only as documented.
#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "tests/process/case_set.h"

namespace svmscore_test {
namespace {

using svmscore::LoadedModel;

constexpr std::size_t kThreads = 4;

void Together(const std::function<void(std::size_t)>& work) {
  std::vector<std::thread> threads;
  for (std::size_t t = 0; t < kThreads; ++t) threads.emplace_back(work, t);
  for (std::thread& thread : threads) thread.join();
}

// All but the two largest, which would only add time.
std::vector<std::string> SomeDocuments() {
  return {Documents().begin(), Documents().end() - 2};
}

std::vector<Answer> Score(const LoadedModel& loaded) {
  CaseSet cases(loaded);
  cases.Score();
  return cases.Answers();
}

// Nothing is started before: the parser, the plug-in and the log are first used by all threads at
// once. Models are freed by another thread than the one that made and used them.
TEST(Threads, LoadModelsSideBySide) {
  const std::vector<std::string> documents = SomeDocuments();
  std::vector<std::map<std::string, std::vector<Answer>>> answers(kThreads);
  std::vector<std::vector<LoadedModel>> models(kThreads);
  Together([&](std::size_t t) {
    for (std::size_t i = 0; i < documents.size(); ++i) {
      // Half of the threads read the same document at the same time, the others another.
      const std::string& path = documents[(i + t / 2) % documents.size()];
      models[t].push_back(Load(path));
      answers[t][path] = Score(models[t].back());
    }
  });
  for (std::size_t t = 0; t < kThreads; ++t) {
    for (LoadedModel& model : models[t]) {
      EXPECT_EQ(answers[t][model.document.Name()], Score(model)) << model.document.Name();
    }
    EXPECT_EQ(answers[t], answers[0]);
  }
}

TEST(Threads, ScoreTheSameModelsSideBySide) {
  std::vector<LoadedModel> models;
  std::vector<std::vector<Answer>> expected;
  for (const std::string& path : SomeDocuments()) {
    models.push_back(Load(path));
    expected.push_back(Score(models.back()));  // the first case of each, alone
  }
  std::vector<std::string> wrong(kThreads);
  Together([&](std::size_t t) {
    std::vector<std::unique_ptr<CaseSet>> cases;
    for (const LoadedModel& model : models) cases.push_back(std::make_unique<CaseSet>(model));
    for (std::size_t i = 0; i < 10 * models.size(); ++i) {
      const std::size_t m = (i + t / 2) % models.size();
      cases[m]->Score();
      if (cases[m]->Answers() != expected[m]) wrong[t] = models[m].document.Name();
    }
  });
  EXPECT_EQ(wrong, std::vector<std::string>(kThreads));
}

}  // namespace
}  // namespace svmscore_test
