#include "arguments.h"

#include "instruction_count.h"

#include <benchmark/benchmark.h>

#include <string_view>

namespace Benchmarks {
namespace {

constexpr std::string_view kResults = "--results=";

// Many repetitions, each shorter than the time that the kernel gives a process in one go: one that
// another process interrupts is an outlier that the median drops, and both sides see the same
// noise. Ours come first: the caller's win.
void Initialize(const char* program, const std::vector<std::string>& given) {
  static std::vector<std::string> texts = {program, "--benchmark_repetitions=401",
                                           "--benchmark_min_time=0.0005",
                                           "--benchmark_enable_random_interleaving=true"};
  texts.insert(texts.end(), given.begin(), given.end());
  std::vector<char*> words;
  for (std::string& text : texts) {
    words.push_back(text.data());
  }
  int count = static_cast<int>(words.size());
  words.push_back(nullptr);
  benchmark::Initialize(&count, words.data());
  if (benchmark::ReportUnrecognizedArguments(count, words.data())) {
    throw WrongArguments();
  }
}

}  // namespace

Arguments::Arguments(int argc, char** argv) {
  std::vector<std::string> others;
  for (int i = 1; i < argc; ++i) {
    const std::string_view argument = argv[i];
    if (argument == "--contention") {
      contends = true;
    } else if (argument == "--sharing") {
      shares = true;
    } else if (argument == "--all") {
      extent = Extent::ALL;
    } else if (argument.starts_with(kResults)) {
      results = argument.substr(kResults.size());
    } else if (argument == "--instructions") {
      countsInstructions = true;
    } else if (argument == kCountInstructions && i + 1 < argc) {
      countedRoot = argv[++i];
    } else {
      others.emplace_back(argument);
      if (argument.starts_with("--benchmark_filter")) {
        choice.emplace_back(argument);
      }
    }
  }
  Initialize(argv[0], others);
}

}  // namespace Benchmarks
