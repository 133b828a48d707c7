// Memory that runs out while a document is loaded or a case is scored. Loading throws
// std::bad_alloc and leaks nothing; scoring ends in a status, and the model stays usable.
//
// Documents are tested with failures at their first allocations and at regular steps after that;
// the argument --all tests every allocation.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <functional>
#include <new>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "host/model/score_status.h"
#include "tests/process/case_set.h"
#include "tests/process/failing_memory.h"

namespace svmscore_test {
namespace {

using svmscore::LoadedModel;

bool try_all = false;

// Where to fail among `count` allocations: at all of them, or at about `most`.
std::vector<long> Places(long count, long most) {
  std::vector<long> places;
  const long dense = try_all ? count : most / 2;
  const long stride = std::max(1L, 2 * (count - dense) / std::max(1L, most));
  for (long n = 1; n <= count; n += n <= dense ? 1 : stride) places.push_back(n);
  return places;
}

// The number of rounds for a document of that size.
long RoundsFor(const std::string& path) {
  const auto size = static_cast<long>(std::filesystem::file_size(path));
  return std::clamp(2'500'000L / size, 20L, 500L);
}

// Each on a new thread, which has no working memory left from earlier ones.
void OnNewThread(const std::function<void()>& work) {
  std::thread(work).join();
}

std::vector<Answer> AnswersOf(const LoadedModel& loaded) {
  std::vector<Answer> answers;
  OnNewThread([&] {
    CaseSet cases(loaded);
    cases.Score();
    answers = cases.Answers();
  });
  return answers;
}

class MemoryFaults : public testing::TestWithParam<std::string> {
 protected:
  void SetUp() override {
    // Allocates what lives as long as the process.
    expected_ = AnswersOf(Load(GetParam()));
    EXPECT_TRUE(std::any_of(expected_.begin(), expected_.end(),
                            [](const Answer& answer) { return answer.bits.size() > 1; }));
  }

  std::vector<Answer> expected_;
};

TEST_P(MemoryFaults, LoadingThrowsAndLeavesNothingBehind) {
  long count = 0;
  {
    const FailingMemory none(0, Failing::kOne);
    Load(GetParam());
    count = Allocations();
  }
  ASSERT_GT(count, 100);
  long thrown = 0;
  for (const long n : Places(count, RoundsFor(GetParam()))) {
    for (const Failing failing : {Failing::kOne, Failing::kAllFromThere}) {
      const long held = HeldAllocations();
      std::optional<LoadedModel> loaded;
      bool otherwise = false;
      try {
        const FailingMemory memory(n, failing);
        loaded.emplace(Load(GetParam()));
      } catch (const std::bad_alloc&) {
        ++thrown;
      } catch (...) {
        otherwise = true;
      }
      ASSERT_FALSE(otherwise) << "threw something else at allocation " << n << " of " << count;
      // A failure that does not stop loading must not change the model.
      if (loaded) {
        ASSERT_EQ(AnswersOf(*loaded), expected_) << "allocation " << n;
      }
      loaded.reset();
      ASSERT_EQ(HeldAllocations(), held) << "allocation " << n << " of " << count;
    }
  }
  EXPECT_GT(thrown, 20);
}

// Scores with failing memory, then without. True where everything was tried.
void ScoreFailing(const std::string& path, long n, Failing failing,
                  const std::vector<Answer>& expected, long& calls) {
  const LoadedModel loaded = Load(path);
  OnNewThread([&] {
    CaseSet cases(loaded);
    {
      const FailingMemory memory(n, failing);
      cases.Score();
      calls = Allocations();
    }
    ASSERT_FALSE(cases.Escaped()) << "allocation " << n;
    const std::vector<Answer> answers = cases.Answers();
    ASSERT_EQ(answers.size(), expected.size());
    for (std::size_t i = 0; i < answers.size(); ++i) {
      const long status = answers[i].status;
      const bool answered =
          status == expected[i].status && (answers[i].bits.empty() || answers[i] == expected[i]);
      ASSERT_TRUE(answered || status == MCScore::kCannotScore)
          << "allocation " << n << ", answer " << i << " with status " << status;
    }
    cases.Score();
    ASSERT_EQ(cases.Answers(), expected) << "after the failure of allocation " << n;
  });
  ASSERT_EQ(AnswersOf(loaded), expected) << "after the failure of allocation " << n;
}

TEST_P(MemoryFaults, ScoringEndsInAStatusAndTheModelStaysGood) {
  long calls = 0;
  ScoreFailing(GetParam(), 0, Failing::kOne, expected_, calls);
  ASSERT_GT(calls, 10);
  for (const long n : Places(calls, std::min(120L, RoundsFor(GetParam())))) {
    for (const Failing failing : {Failing::kOne, Failing::kAllFromThere}) {
      const long held = HeldAllocations();
      long ignored = 0;
      ScoreFailing(GetParam(), n, failing, expected_, ignored);
      ASSERT_FALSE(HasFatalFailure());
      ASSERT_EQ(HeldAllocations(), held) << "allocation " << n << " of " << calls;
    }
  }
}

std::string NameOfDocument(const testing::TestParamInfo<std::string>& info) {
  const std::filesystem::path path(info.param);
  return path.stem() == "model" ? path.parent_path().filename().string() : path.stem().string();
}

INSTANTIATE_TEST_SUITE_P(Documents, MemoryFaults, testing::ValuesIn(Documents()), NameOfDocument);

}  // namespace
}  // namespace svmscore_test

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  svmscore_test::try_all = argc > 1 && std::strcmp(argv[1], "--all") == 0;
  return RUN_ALL_TESTS();
}
