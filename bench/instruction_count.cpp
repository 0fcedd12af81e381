#include "instruction_count.h"

#include "child_process.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

#if __has_include(<valgrind/callgrind.h>)
#include <valgrind/callgrind.h>
#else
// Nobody counts then.
#define RUNNING_ON_VALGRIND 0
#define CALLGRIND_ZERO_STATS
#define CALLGRIND_START_INSTRUMENTATION
#define CALLGRIND_DUMP_STATS_AT(label) static_cast<void>(label)
#endif

namespace Benchmarks {
namespace {

constexpr int kRunsOfOne = 8;
constexpr int kRunsOfMany = 2;

std::string name;
int runs = kRunsOfOne;

struct Sum {
  double instructions = 0;
  int dumps = 0;
};

// Of each run a file, with lines like "desc: Trigger: Client Request: NAME" and "summary: NUMBER".
void ReadDump(const std::filesystem::path& path, std::map<std::string, Sum>& sums) {
  const std::string trigger = "desc: Trigger: Client Request: ";
  const std::string summary = "summary: ";
  std::ifstream file(path);
  std::string counted;
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with(trigger)) {
      counted = line.substr(trigger.size());
    } else if (line.starts_with(summary) && !counted.empty()) {
      sums[counted].instructions += std::strtod(line.c_str() + summary.size(), nullptr);
      ++sums[counted].dumps;
      return;
    }
  }
}

void RunValgrind(const std::filesystem::path& dumps, const std::string& root,
                 const std::vector<std::string>& filter) {
  std::vector<std::string> words = {"valgrind",
                                    "--tool=callgrind",
                                    "--instr-atstart=no",
                                    "--callgrind-out-file=" + (dumps / "dump").string(),
                                    "--log-file=" + (dumps / "log").string(),
                                    OwnProgram(),
                                    kCountInstructions,
                                    root};
  words.insert(words.end(), filter.begin(), filter.end());
  std::vector<char*> arguments;
  for (std::string& word : words) {
    arguments.push_back(word.data());
  }
  arguments.push_back(nullptr);
  pid_t child = -1;
  if (posix_spawnp(&child, arguments[0], nullptr, nullptr, arguments.data(), environ) != 0) {
    throw std::runtime_error("instructions are counted by valgrind, which is not there");
  }
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  if (status != 0) {
    throw std::runtime_error("counting instructions failed; " + (dumps / "log").string());
  }
}

}  // namespace

bool InstructionCount::IsTaken() {
  return RUNNING_ON_VALGRIND != 0;
}

bool InstructionCount::Announce(const std::string& side, int items) {
  static std::set<std::string> counted;
  name = side;
  runs = items > 1 ? kRunsOfMany : kRunsOfOne;
  return counted.insert(side).second;
}

int InstructionCount::Runs() {
  return runs;
}

// Once started, it goes on: what is counted after a pause is not to be trusted.
void InstructionCount::Begin() {
  CALLGRIND_START_INSTRUMENTATION;
}

void InstructionCount::BeginRun() {
  CALLGRIND_ZERO_STATS;
}

void InstructionCount::EndRun() {
  CALLGRIND_DUMP_STATS_AT(name.c_str());
}

std::map<std::string, double> CountInstructions(const std::string& root,
                                                const std::vector<std::string>& filter) {
  const std::filesystem::path dumps = std::filesystem::current_path() / "instructions";
  std::filesystem::remove_all(dumps);
  std::filesystem::create_directory(dumps);
  RunValgrind(dumps, root, filter);
  std::map<std::string, Sum> sums;
  for (const auto& entry : std::filesystem::directory_iterator(dumps)) {
    ReadDump(entry.path(), sums);
  }
  std::map<std::string, double> counts;
  for (const auto& [counted, sum] : sums) {
    counts[counted] = sum.instructions / sum.dumps;
  }
  return counts;
}

}  // namespace Benchmarks
