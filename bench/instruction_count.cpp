#include "instruction_count.h"

#include "child_process.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <set>
#include <stdexcept>
#include <utility>

#if __has_include(<valgrind/callgrind.h>)
#include <valgrind/callgrind.h>
#else
// Nobody counts then.
#define TARN_WITHOUT_VALGRIND
#define RUNNING_ON_VALGRIND 0
#define CALLGRIND_ZERO_STATS
#define CALLGRIND_START_INSTRUMENTATION
#define CALLGRIND_TOGGLE_COLLECT
#define CALLGRIND_DUMP_STATS_AT(label) static_cast<void>(label)
#endif

namespace Benchmarks {
namespace {

constexpr int kRunsOfOne = 8;
constexpr int kRunsOfMany = 2;

std::string name;
int runs = kRunsOfOne;

// Of the runs by what was counted.
using Runs = std::map<std::string, std::vector<double>>;

// Of each run a file, with lines like "desc: Trigger: Client Request: NAME" and "summary: NUMBER".
void ReadDump(const std::filesystem::path& path, Runs& runsOf) {
  const std::string trigger = "desc: Trigger: ";
  const std::string summary = "summary: ";
  std::ifstream file(path);
  std::string counted;
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with(trigger)) {
      counted = line.substr(trigger.size());
    } else if (line.starts_with(summary)) {
      runsOf[counted].push_back(std::strtod(line.c_str() + summary.size(), nullptr));
      return;
    }
  }
}

// Keeps what the process prints, and valgrind says, from the table.
void RunValgrind(const std::filesystem::path& dumps, const std::vector<std::string>& options,
                 const std::vector<std::string>& command) {
#ifdef TARN_WITHOUT_VALGRIND
  throw std::runtime_error(
      "instructions are counted by valgrind, which was not there when this was built");
#endif
  std::vector<std::string> words = {"valgrind", "--tool=callgrind",
                                    "--callgrind-out-file=" + (dumps / "dump").string(),
                                    "--log-file=" + (dumps / "log").string()};
  words.insert(words.end(), options.begin(), options.end());
  words.insert(words.end(), command.begin(), command.end());
  const std::optional<int> status = RunProgram(std::move(words));
  if (!status) {
    throw std::runtime_error("instructions are counted by valgrind, which is not there");
  }
  if (*status != 0) {
    throw std::runtime_error("counting instructions failed; " + (dumps / "log").string());
  }
}

std::filesystem::path FreshDirectory(const char* leaf) {
  std::filesystem::path directory = std::filesystem::current_path() / leaf;
  std::filesystem::remove_all(directory);
  std::filesystem::create_directory(directory);
  return directory;
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

// Takes long, as keeping a count does.
void InstructionCount::Clear() {
  CALLGRIND_ZERO_STATS;
}

void InstructionCount::BeginRun() {
  CALLGRIND_TOGGLE_COLLECT;
}

void InstructionCount::EndRun() {
  CALLGRIND_TOGGLE_COLLECT;
  CALLGRIND_DUMP_STATS_AT(name.c_str());
}

std::map<std::string, double> CountInstructions(const std::string& root,
                                                const std::vector<std::string>& filter) {
  const std::filesystem::path dumps = FreshDirectory("instructions");
  std::vector<std::string> command = {OwnProgram(), kCountInstructions, root};
  command.insert(command.end(), filter.begin(), filter.end());
  RunValgrind(dumps, {"--instr-atstart=no", "--collect-atstart=no"}, command);
  Runs runsOf;
  for (const auto& entry : std::filesystem::directory_iterator(dumps)) {
    ReadDump(entry.path(), runsOf);
  }
  std::map<std::string, double> counts;
  const std::string request = "Client Request: ";
  for (auto& [trigger, counted] : runsOf) {
    if (trigger.starts_with(request)) {
      // In some runs a tick of the clock passes, or the C library tidies up what others left behind.
      counts[trigger.substr(request.size())] = *std::min_element(counted.begin(), counted.end());
    }
  }
  return counts;
}

double CountWholeProcess(const std::vector<std::string>& command) {
  const std::filesystem::path dumps = FreshDirectory("process-instructions");
  RunValgrind(dumps, {}, command);
  Runs runsOf;
  ReadDump(dumps / "dump", runsOf);
  const std::vector<double>& counted = runsOf["Program termination"];
  if (counted.empty()) {
    throw std::runtime_error("nothing was counted: " + command[0]);
  }
  return counted[0];
}

}  // namespace Benchmarks
