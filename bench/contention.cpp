#include "contention.h"

#include "tarnconfigstore/config_store.h"
#include "tarnconfigstore/exceptions.h"
#include "tarnconfigstore/key_values.h"

#include "child_process.h"
#include "measured_host.h"
#include "samples.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <sstream>
#include <thread>
#include <vector>

namespace Benchmarks {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kProcesses = 10;
constexpr int kThreads = 2;
constexpr int kUpdates = 3000;

// Times in milliseconds.
struct Figures {
  int failed = 0;
  double total = 0;
  double longest = 0;

  void Add(const Figures& other) {
    failed += other.failed;
    total += other.total;
    longest = std::max(longest, other.longest);
  }
};

double MillisecondsSince(Clock::time_point start) {
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

Figures UpdateAgainAndAgain() {
  const auto store = TarnConfigStore::ConfigStore::GetStore(TarnConfigStore::sGlobalNamespace);
  const auto object = std::make_shared<TarnConfigStore::ConfigStoreObject>(IdOf(Host::kWritten));
  Figures figures;
  for (int i = 0; i < kUpdates; ++i) {
    object->SetData(("{\"priority\":" + std::to_string(i % 100) + "}").c_str());
    const Clock::time_point start = Clock::now();
    try {
      store->Update(object, TarnConfigStore::EXTERNAL);
    } catch (const TarnConfigStore::ConfigStoreException& failure) {
      std::fprintf(stderr, "%s\n", failure.toString().c_str());
      ++figures.failed;
    }
    const double taken = MillisecondsSince(start);
    figures.total += taken;
    figures.longest = std::max(figures.longest, taken);
  }
  return figures;
}

double Contend(const std::string& /*root*/) {
  const Clock::time_point start = Clock::now();
  std::vector<Figures> figures(kThreads);
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (Figures& own : figures) {
    threads.emplace_back([&own] { own = UpdateAgainAndAgain(); });
  }
  Figures all;
  for (int i = 0; i < kThreads; ++i) {
    threads[static_cast<std::size_t>(i)].join();
    all.Add(figures[static_cast<std::size_t>(i)]);
  }
  const double taken = MillisecondsSince(start);
  std::printf("%d %.3f %.3f %.3f\n", all.failed, all.total, all.longest, taken);
  return taken;
}

double WriteBesideOthers(const std::string& /*root*/) {
  const Clock::time_point start = Clock::now();
  TarnConfigStore::SetKeyValue("WRITTEN_BESIDE", "others");
  return MillisecondsSince(start) * 1e6;
}

const ChildTask contend("contend", Contend);

}  // namespace

const ChildTask writeBesideOthers("write-beside-others", WriteBesideOthers);

bool MeasureContention(const std::string& root) {
  constexpr double kLongestOfMean = 10;
  constexpr double kSlowestOfMean = 0.5;
  std::vector<Child> children;
  children.reserve(kProcesses);
  for (int i = 0; i < kProcesses; ++i) {
    children.push_back(StartChild(contend, root));
  }
  Figures all;
  double slowest = 0;
  double rates = 0;
  for (const Child& child : children) {
    Figures own;
    double elapsed = 0;
    std::istringstream(Collect(child)) >> own.failed >> own.total >> own.longest >> elapsed;
    all.Add(own);
    slowest = std::max(slowest, elapsed);
    rates += 1 / elapsed;
  }
  const double mean = all.total / (kProcesses * kThreads * kUpdates);
  const double share = kProcesses / slowest / rates;
  const bool holds =
      all.failed == 0 && all.longest <= kLongestOfMean * mean && share >= kSlowestOfMean;
  std::printf(
      "%d processes of %d threads, %d durable updates each: %d failed, mean %.2f ms, longest %.2f "
      "ms (%.1f means), the slowest process got %.2f of the mean, %.0f updates a second  %s\n",
      kProcesses, kThreads, kUpdates, all.failed, mean, all.longest, all.longest / mean, share,
      kProcesses * kThreads * kUpdates / slowest * 1000, holds ? "ok" : "FAILED");
  return holds;
}

}  // namespace Benchmarks
