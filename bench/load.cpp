// load PLUGIN FILE...: reads each document with a bare DOM parser and as a model, in turn, and
// prints MB/s of both as the median of several rounds, and the median ratio.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <vector>

#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/util/PlatformUtils.hpp>

#include "host/load/loader.h"
#include "host/load/plugin.h"

namespace {

constexpr int kRounds = 11;

template <typename Work>
double Seconds(const Work& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

svmscore::PmmlDocument ParseAsProgram(const char* file) {
  return svmscore::PmmlDocument::FromFile(file, {}, svmscore::Arrays::kAsNumbers);
}

void Compare(const svmscore::Plugin& plugin, const char* file) {
  const double megabytes = static_cast<double>(std::filesystem::file_size(file)) / 1e6;
  std::vector<double> bare, whole, ratio;
  for (int round = 0; round < kRounds; ++round) {
    bare.push_back(Seconds([file] {
      xercesc::XercesDOMParser parser;
      parser.setValidationScheme(xercesc::XercesDOMParser::Val_Never);
      parser.setDoNamespaces(true);
      parser.setLoadExternalDTD(false);
      parser.parse(file);
    }));
    whole.push_back(
        Seconds([&] { svmscore::LoadModel(plugin, [file] { return ParseAsProgram(file); }); }));
    ratio.push_back(bare.back() / whole.back());
  }
  std::printf("| %s | %.1f | %.0f | %.0f | %.0f %% |\n",
              std::filesystem::path(file).filename().c_str(), megabytes, megabytes / Median(bare),
              megabytes / Median(whole), 100.0 * Median(ratio));
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 3) {
    std::fputs("usage: load PLUGIN FILE...\n", stderr);
    return 2;
  }
  svmscore::StartXerces();
  const svmscore::Plugin plugin(arguments[1]);
  for (int i = 2; i < count; ++i) Compare(plugin, arguments[i]);
}
