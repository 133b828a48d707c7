// soak PLUGIN EXAMPLES SECONDS LOADS CASES [THREADS]: loads, scores and frees the models in the
// folders of EXAMPLES, over and over on several threads, until both counts or the time are reached.
//
// Prints resident memory and throughput at intervals. Memory counts as flat if its peak in the
// second half of the run exceeds its peak in the first half, without the first tenth, by at most
// 1 % and 1 MiB: in 10,000 loads of 1,000 cases each this detects a leak of one byte for each case,
// or of some 300 bytes for each load. Every answer is compared with the first of its model. Exit
// status: 0 flat and every answer the same; 1 otherwise, or too short to tell; 2 usage.
#include <algorithm>
#include <atomic>
#include <bit>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <unistd.h>

#include "host/load/loader.h"
#include "host/load/plugin.h"
#include "host/model/batch_model.h"
#include "host/model/score_case_record.h"

namespace {

using Clock = std::chrono::steady_clock;
using MCZandor_850::InputCaseRecord;
using MCZandor_850::ScoreResult;

constexpr std::size_t kBatch = 250;  // cases at a time
constexpr std::size_t kAlone = 20;   // cases of a load that are scored one at a time
constexpr double kLines = 10;        // lines printed in the second half of the run, about

double ResidentMebibytes() {
  std::ifstream file("/proc/self/statm");
  long total = 0, resident = 0;
  file >> total >> resident;
  return static_cast<double>(resident) * static_cast<double>(sysconf(_SC_PAGESIZE)) / (1 << 20);
}

// The cases of a file whose cells contain no quotes.
struct Table {
  std::vector<std::string> header;
  std::vector<std::vector<std::string>> rows;
};

std::vector<std::string> Cells(const std::string& line) {
  std::vector<std::string> cells(1);
  for (const char c : line) {
    if (c == ',') {
      cells.emplace_back();
    } else if (c != '\r') {
      cells.back() += c;
    }
  }
  return cells;
}

Table ReadTable(const std::filesystem::path& path) {
  Table table;
  std::ifstream file(path);
  std::string line;
  if (std::getline(file, line)) table.header = Cells(line);
  while (std::getline(file, line)) table.rows.push_back(Cells(line));
  return table;
}

struct Example {
  std::string model;
  Table cases;
  std::atomic<std::uint64_t> answers{0};  // of all cases together, hashed; 0 before the first load
};

struct Progress {
  long most_loads;
  long most_cases;
  Clock::time_point end;
  std::atomic<long> loads{0};
  std::atomic<long> cases{0};
  std::atomic<long> wrong{0};

  bool Finished() const {
    return (loads >= most_loads && cases >= most_cases) || Clock::now() >= end;
  }
};

// One model, loaded to score some cases and be freed.
class Sitting {
 public:
  Sitting(const svmscore::Plugin& plugin, const Example& example)
      : example_(example),
        loaded_(LoadModel(plugin, svmscore::PmmlDocument::FromFile(example.model))),
        batch_(dynamic_cast<svmscore::BatchModel&>(*loaded_.model)),
        record_(loaded_.needed, true, false),
        entries_(batch_.EntryCount() * kBatch),
        status_(kBatch),
        category_(kBatch),
        value_(kBatch) {
    for (std::size_t i = 0; i < record_.Size(); ++i) {
      const auto& header = example.cases.header;
      const auto found = std::find(header.begin(), header.end(), record_.Variable(i).GetName());
      columns_.push_back(static_cast<std::size_t>(found - header.begin()));
    }
  }

  // Scores `count` cases of the table, over and over, and hashes their results.
  std::uint64_t Score(std::size_t count) {
    std::unique_ptr<ScoreResult> result;
    for (std::size_t i = 0; i < std::min(count, kAlone); ++i) {
      Fill(i);
      ScoreResult* raw = result.release();
      Note(
          static_cast<std::uint64_t>(loaded_.model->GetScore(&record_, raw, false).GetErrorCode()));
      result.reset(raw);
      Note(std::bit_cast<std::uint64_t>(result->GetConfidence()));
    }
    for (std::size_t i = 0; i < count; i += kBatch) ScoreBatch(i, std::min(kBatch, count - i));
    return hash_;
  }

 private:
  void Fill(std::size_t number) {
    const auto& row = example_.cases.rows[number % example_.cases.rows.size()];
    for (std::size_t i = 0; i < columns_.size(); ++i) record_.SetText(i, row[columns_[i]]);
  }

  void ScoreBatch(std::size_t first, std::size_t count) {
    std::size_t taken = 0;
    for (std::size_t i = 0; i < count; ++i) {
      Fill(first + i);
      if (!batch_.ReadCase(record_, false, entries_.data() + taken, kBatch).IsError()) ++taken;
    }
    svmscore::BatchResults results;
    results.status = status_.data();
    results.category = category_.data();
    results.value = value_.data();
    batch_.ScoreBatch({entries_.data(), kBatch, taken}, results);
    for (std::size_t c = 0; c < taken; ++c) {
      Note(static_cast<std::uint64_t>(status_[c]) + static_cast<std::uint64_t>(category_[c]));
      Note(std::bit_cast<std::uint64_t>(value_[c]));
    }
  }

  void Note(std::uint64_t word) { hash_ = (hash_ ^ word) * 0x100000001b3; }

  const Example& example_;
  svmscore::LoadedModel loaded_;
  svmscore::BatchModel& batch_;
  InputCaseRecord record_;
  std::vector<std::size_t> columns_;
  std::vector<double> entries_;
  std::vector<long> status_;
  std::vector<int> category_;
  std::vector<double> value_;
  std::uint64_t hash_ = 0xcbf29ce484222325;
};

void Work(const svmscore::Plugin& plugin, std::vector<Example>& examples, std::size_t first,
          std::size_t cases_a_load, Progress& progress) {
  for (std::size_t turn = first; !progress.Finished(); ++turn) {
    Example& example = examples[turn % examples.size()];
    const std::uint64_t answers = Sitting(plugin, example).Score(cases_a_load);
    std::uint64_t earlier = 0;
    if (!example.answers.compare_exchange_strong(earlier, answers) && earlier != answers) {
      ++progress.wrong;
    }
    ++progress.loads;
    progress.cases += static_cast<long>(cases_a_load + std::min(cases_a_load, kAlone));
  }
}

// Watches until the work is done; resident memory at even intervals.
std::vector<double> Watch(const Progress& progress) {
  const auto start = Clock::now();
  std::vector<double> memory;
  double next = 0.0;
  std::printf("%9s %9s %12s %12s %14s\n", "seconds", "loads", "cases", "cases/s", "resident MiB");
  while (!progress.Finished()) {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    memory.push_back(ResidentMebibytes());
    const double passed = std::chrono::duration<double>(Clock::now() - start).count();
    if (passed < next && !progress.Finished()) continue;
    const auto cases = static_cast<double>(progress.cases.load());
    std::printf("%9.1f %9ld %12.0f %12.0f %14.1f\n", passed, progress.loads.load(), cases,
                passed > 0 ? cases / passed : 0.0, memory.back());
    std::fflush(stdout);
    next = passed + std::max(1.0, passed / kLines);
  }
  return memory;
}

// Says whether the memory was flat.
bool IsFlat(const std::vector<double>& memory) {
  if (memory.size() < 20) {
    std::puts("too short to tell whether memory stayed flat");
    return false;
  }
  const auto at = [&memory](double share) {
    return memory.begin() + static_cast<std::ptrdiff_t>(share * static_cast<double>(memory.size()));
  };
  const double early = *std::max_element(at(0.1), at(0.5));
  const double late = *std::max_element(at(0.5), memory.end());
  const bool flat = late <= early * 1.01 + 1.0;
  std::printf("memory %s: at most %.1f MiB in the first half, %.1f MiB in the second\n",
              flat ? "stayed flat" : "GREW", early, late);
  return flat;
}

bool IsComplete(const std::filesystem::path& folder) {
  return exists(folder / "model.pmml") && exists(folder / "cases.csv");
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 6) {
    std::fputs("usage: soak PLUGIN EXAMPLES SECONDS LOADS CASES [THREADS]\n", stderr);
    return 2;
  }
  const svmscore::Plugin plugin(arguments[1]);
  std::vector<std::filesystem::path> folders;
  for (const auto& folder : std::filesystem::directory_iterator(arguments[2])) {
    if (IsComplete(folder.path())) folders.push_back(folder.path());
  }
  std::vector<Example> examples(folders.size());
  for (std::size_t i = 0; i < folders.size(); ++i) {
    examples[i].model = folders[i] / "model.pmml";
    examples[i].cases = ReadTable(folders[i] / "cases.csv");
  }
  const double seconds = std::atof(arguments[3]);
  const long most_loads = std::max(1L, std::atol(arguments[4]));
  const long most_cases = std::max(1L, std::atol(arguments[5]));
  const auto threads =
      static_cast<std::size_t>(count > 6 ? std::max(1, std::atoi(arguments[6])) : 2);
  if (examples.empty() || seconds <= 0.0) {
    std::fputs("soak: no examples, or no time\n", stderr);
    return 2;
  }
  const auto cases_a_load = static_cast<std::size_t>(std::max(1L, most_cases / most_loads));
  Progress progress{most_loads, most_cases,
                    Clock::now() + std::chrono::milliseconds(static_cast<long>(seconds * 1000))};
  std::vector<std::thread> workers;
  for (std::size_t i = 0; i < threads; ++i) {
    workers.emplace_back(Work, std::cref(plugin), std::ref(examples), i * examples.size() / threads,
                         cases_a_load, std::ref(progress));
  }
  const std::vector<double> memory = Watch(progress);
  for (std::thread& worker : workers) worker.join();
  std::printf("%ld loads, %ld cases, %ld loads with different answers\n", progress.loads.load(),
              progress.cases.load(), progress.wrong.load());
  return IsFlat(memory) && progress.wrong == 0 ? 0 : 1;
}
