#include "conditions.h"

#include "tarnconfigstore/key_values.h"

#include "platform/db_testing.h"

#include "child_process.h"
#include "contention.h"
#include "daemon.h"
#include "json_schema/compiled_schema.h"
#include "measured_host.h"
#include "samples.h"
#include "sync_count.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace Benchmarks {
namespace {

constexpr int kOperations = 1000;

using DBStore::testing::Counters;
using DBStore::testing::GetCounters;
using JsonValidator::CompiledSchema;

template <class Operation>
bool NothingTwice(const char* name, Operation operation) {
  operation();
  const Counters before = GetCounters();
  const std::uint64_t compiledBefore = CompiledSchema::CountSoFar();
  for (int i = 0; i < kOperations; ++i) {
    operation();
  }
  const Counters after = GetCounters();
  const auto opens = static_cast<unsigned long long>(after.opens - before.opens);
  const auto prepares = static_cast<unsigned long long>(after.prepares - before.prepares);
  const auto compiled =
      static_cast<unsigned long long>(CompiledSchema::CountSoFar() - compiledBefore);
  // Counters that never move would show nothing.
  const bool alive = before.opens > 0 && before.prepares > 0 && compiledBefore > 0;
  const bool holds = alive && opens == 0 && prepares == 0 && compiled == 0;
  std::printf(
      "%d %s after the first: %llu databases opened, %llu statements prepared, %llu schemas "
      "compiled  %s\n",
      kOperations, name, opens, prepares, compiled, holds ? "ok" : "FAILED");
  return holds;
}

// Fewer than a checkpoint takes, so that each side's syncs are those of its commits.
constexpr std::uint64_t kDurableSets = 100;

template <class Operation>
std::uint64_t SyncsOf(Roads& roads, Operation operation) {
  roads.floor.Run("PRAGMA wal_checkpoint(TRUNCATE)");
  // The first commit after a checkpoint starts the log anew.
  operation();
  const std::uint64_t before = CountSyncs();
  for (std::uint64_t i = 0; i < kDurableSets; ++i) {
    operation();
  }
  return CountSyncs() - before;
}

// A daemon that accepts and never reads has to leave every write whole and nearly as fast.
template <class Operation>
bool NobodyWaits(Operation operation) {
  using Clock = std::chrono::steady_clock;
  using Milliseconds = std::chrono::duration<double, std::milli>;
  constexpr double kLongest = 100;
  Daemon daemon(Daemon::Manner::ACCEPTS_ONLY);
  TarnConfigStore::SetKeyValue("NOTIFY_KEELD", "true");
  double longest = 0;
  for (int i = 0; i < kOperations; ++i) {
    const Clock::time_point start = Clock::now();
    operation();
    longest = std::max(longest, Milliseconds(Clock::now() - start).count());
  }
  TarnConfigStore::SetKeyValue("NOTIFY_KEELD", "false");
  const bool holds = longest <= kLongest && daemon.HasAccepted(kOperations);
  std::printf("%d Sets with a daemon that accepts and never reads: the longest took %.1f ms  %s\n",
              kOperations, longest, holds ? "ok" : "FAILED");
  return holds;
}

// A daemon that hangs with a full backlog may hold up neither a transaction nor who waits for it.
template <class Operation>
bool NobodyIsHeldUp(Roads& roads, const std::string& root, Operation operation) {
  constexpr double kLongest = 200;
  constexpr int kWrites = 45;
  const Daemon daemon(Daemon::Manner::HANGS);
  SendBare("the only one that there is room for");
  TarnConfigStore::SetKeyValue("NOTIFY_KEELD", "true");
  double waited = 0;
  {
    TarnConfigStore::ConfigStoreTransaction transaction(roads.library);
    const Child other = StartChild(writeBesideOthers, root);
    for (int i = 0; i < kWrites; ++i) {
      operation();
    }
    transaction.Commit();
    waited = std::strtod(Collect(other).c_str(), nullptr) / 1e6;
  }
  TarnConfigStore::SetKeyValue("NOTIFY_KEELD", "false");
  std::printf(
      "%d Sets in a transaction with a daemon that hangs: another process's write took %.1f "
      "ms  %s\n",
      kWrites, waited, waited < kLongest ? "ok" : "FAILED");
  return waited < kLongest;
}

}  // namespace

bool CheckConditions(Roads& roads, const std::string& root) {
  const TarnConfigStore::ConfigStoreObjectId id = IdOf(Host::kWritten);
  const auto object = std::make_shared<TarnConfigStore::ConfigStoreObject>(id);
  object->SetData(ObjectText(1).c_str());
  const auto setByLibrary = [&] { roads.library->Set(object, TarnConfigStore::EXTERNAL); };
  const FloorType type(root, id);
  const auto floorObject = roads.floor.Get(id);
  const auto setByFloor = [&] { roads.floor.Set(id, floorObject->Data(), type); };

  bool holds = NothingTwice("Gets", [&] { roads.library->Get(IdOf(Host::kPlain)); });
  {
    TarnConfigStore::ConfigStoreTransaction transaction(roads.library);
    holds &= NothingTwice("Sets", setByLibrary);
    transaction.Commit();
  }

  const std::uint64_t library = SyncsOf(roads, setByLibrary);
  const std::uint64_t floor = SyncsOf(roads, setByFloor);
  holds &= NobodyWaits(setByLibrary);
  holds &= NobodyIsHeldUp(roads, root, setByLibrary);
  const bool same = library == floor && library == kDurableSets;
  std::printf("%llu durable Sets: %llu syncs by the library, %llu by the floor  %s\n\n",
              static_cast<unsigned long long>(kDurableSets),
              static_cast<unsigned long long>(library), static_cast<unsigned long long>(floor),
              same ? "ok" : "FAILED");
  return holds && same;
}

}  // namespace Benchmarks
