#include "sharing.h"

#include "tarnconfigstore/config_store.h"

#include "child_process.h"
#include "floor_store.h"
#include "measured_host.h"
#include "samples.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <exception>
#include <sstream>
#include <unistd.h>
#include <vector>

namespace Benchmarks {
namespace {

using Clock = std::chrono::steady_clock;
using TarnConfigStore::ConfigStoreObject;

constexpr std::chrono::seconds kWhile{1};
constexpr std::size_t kReplaced = 1000;

// Milliseconds, where it is not a number of operations.
struct Turns {
  int done = 0;
  int failed = 0;
  double longest = 0;
};

template <class Operation>
Turns AgainAndAgain(Operation operation) {
  Turns turns;
  for (const Clock::time_point begin = Clock::now(); Clock::now() - begin < kWhile;) {
    const Clock::time_point start = Clock::now();
    try {
      operation();
      ++turns.done;
    } catch (const std::exception& failure) {
      std::fprintf(stderr, "%s\n", failure.what());
      ++turns.failed;
    }
    const std::chrono::duration<double, std::milli> taken = Clock::now() - start;
    turns.longest = std::max(turns.longest, taken.count());
  }
  return turns;
}

double Tell(const Turns& turns) {
  std::printf("%d %d %.3f\n", turns.done, turns.failed, turns.longest);
  return 0;
}

Turns Told(const Child& child) {
  Turns turns;
  std::istringstream(Collect(child)) >> turns.done >> turns.failed >> turns.longest;
  return turns;
}

std::shared_ptr<TarnConfigStore::ConfigStore> Library() {
  return TarnConfigStore::ConfigStore::GetStore(TarnConfigStore::sGlobalNamespace);
}

// An instance of the process's own.
std::string OwnName() {
  return InstanceId(static_cast<std::size_t>(getpid()) % 1'000'000);
}

double WriteByLibrary(const std::string& /*root*/) {
  const auto store = Library();
  const std::string name = OwnName();
  const auto object =
      std::make_shared<ConfigStoreObject>(IdOf(Host::KeyOfWrittenInstances(kReplaced), name));
  unsigned variant = 0;
  return Tell(AgainAndAgain([&] {
    object->SetData(ObjectText(++variant, name).c_str());
    store->Set(object, TarnConfigStore::EXTERNAL);
  }));
}

double WriteByFloor(const std::string& root) {
  FloorStore store(root);
  const std::string name = OwnName();
  const auto id = IdOf(Host::KeyOfWrittenInstances(kReplaced), name);
  const FloorType type(root, id);
  unsigned variant = 0;
  return Tell(AgainAndAgain(
      [&] { store.Set(id, FloorObject::Make({}, ObjectText(++variant, name))->Data(), type); }));
}

double ReadByLibrary(const std::string& /*root*/) {
  const auto store = Library();
  return Tell(AgainAndAgain([&] { store->Get(IdOf(Host::kPlain)); }));
}

double ReadByFloor(const std::string& root) {
  FloorStore store(root);
  return Tell(AgainAndAgain([&] { store.Get(IdOf(Host::kPlain)); }));
}

double ReplaceByLibrary(const std::string& /*root*/) {
  const auto store = Library();
  std::vector<std::shared_ptr<ConfigStoreObject>> objects;
  for (std::size_t i = 0; i < kReplaced; ++i) {
    const std::string name = InstanceId(i);
    objects.push_back(
        std::make_shared<ConfigStoreObject>(IdOf(Host::KeyOfWrittenInstances(kReplaced), name)));
    objects.back()->SetData(ObjectText(3, name).c_str());
  }
  return Tell(AgainAndAgain([&] { store->SetInstances(objects, TarnConfigStore::EXTERNAL); }));
}

double ReplaceByFloor(const std::string& root) {
  FloorStore store(root);
  const auto id = IdOf(Host::KeyOfWrittenInstances(kReplaced));
  const FloorType type(root, id);
  std::vector<std::unique_ptr<FloorObject>> objects;
  for (std::size_t i = 0; i < kReplaced; ++i) {
    const std::string name = InstanceId(i);
    objects.push_back(FloorObject::Make({.instanceId = name}, ObjectText(3, name)));
  }
  return Tell(AgainAndAgain([&] { store.SetInstances(id, objects, type); }));
}

struct Side {
  const char* name;
  const ChildTask writes;
  const ChildTask reads;
  const ChildTask replaces;
};

const Side library = {"library",
                      {"share-write/library", WriteByLibrary},
                      {"share-read/library", ReadByLibrary},
                      {"share-replace/library", ReplaceByLibrary}};
const Side floorSide = {"floor",
                        {"share-write/floor", WriteByFloor},
                        {"share-read/floor", ReadByFloor},
                        {"share-replace/floor", ReplaceByFloor}};

bool ShareAmongWriters(const Side& side, int writers, const std::string& root) {
  std::vector<Child> children;
  children.reserve(static_cast<std::size_t>(writers));
  for (int i = 0; i < writers; ++i) {
    children.push_back(StartChild(side.writes, root));
  }
  Turns all;
  int fewest = 0;
  for (std::size_t i = 0; i < children.size(); ++i) {
    const Turns own = Told(children[i]);
    fewest = i == 0 ? own.done : std::min(fewest, own.done);
    all.done += own.done;
    all.failed += own.failed;
    all.longest = std::max(all.longest, own.longest);
  }
  std::printf(
      "%d writers at once, %s: %d commits in a second, the slowest writer got %.2f of the mean, "
      "the "
      "longest took %.1f ms, %d failed\n",
      writers, side.name, all.done, static_cast<double>(fewest) * writers / all.done, all.longest,
      all.failed);
  return all.failed == 0;
}

bool ReadBesideBulkWrite(const Side& side, const std::string& root) {
  const Turns alone = Told(StartChild(side.reads, root));
  const Child writer = StartChild(side.replaces, root);
  const Turns beside = Told(StartChild(side.reads, root));
  const Turns replaced = Told(writer);
  std::printf(
      "A reader beside %d replacements of %zu instances, %s: %.0f ns a Get against %.0f alone, the "
      "longest took %.2f ms against %.2f, %d failed\n",
      replaced.done, kReplaced, side.name, 1e9 / beside.done, 1e9 / alone.done, beside.longest,
      alone.longest, beside.failed + replaced.failed);
  return beside.failed + replaced.failed == 0;
}

}  // namespace

bool MeasureSharing(const std::string& root) {
  bool holds = true;
  std::printf("\n");
  for (const int writers : {2, 4, 8}) {
    for (const Side* side : {&library, &floorSide}) {
      holds &= ShareAmongWriters(*side, writers, root);
    }
  }
  for (const Side* side : {&library, &floorSide}) {
    holds &= ReadBesideBulkWrite(*side, root);
  }
  return holds;
}

}  // namespace Benchmarks
