#include "tarnconfigstore/config_store.h"

#include "benchmarks.h"
#include "child_benchmarks.h"
#include "floor_store.h"
#include "measured_host.h"
#include "samples.h"

#include <chrono>
#include <stdexcept>

namespace Benchmarks {
namespace {

using Clock = std::chrono::steady_clock;

double NanosecondsSince(Clock::time_point start) {
  return std::chrono::duration<double, std::nano>(Clock::now() - start).count();
}

double FirstGetByLibrary(const std::string& /*root*/) {
  const TarnConfigStore::ConfigStoreObjectId id = IdOf(Host::kPlain);
  const Clock::time_point start = Clock::now();
  const auto store = TarnConfigStore::ConfigStore::GetStore(TarnConfigStore::sGlobalNamespace);
  const auto object = store->Get(id);
  const double taken = NanosecondsSince(start);
  if (!object) {
    throw std::runtime_error("nothing stored");
  }
  return taken;
}

double FirstGetByFloor(const std::string& root) {
  const TarnConfigStore::ConfigStoreObjectId id = IdOf(Host::kPlain);
  const Clock::time_point start = Clock::now();
  FloorStore store(root);
  const FloorType type(root, id);
  const auto object = store.Get(id);
  const double taken = NanosecondsSince(start);
  if (!object) {
    throw std::runtime_error("nothing stored");
  }
  return taken;
}

const ChildTask firstGetByLibrary("first-get/library", FirstGetByLibrary);
const ChildTask firstGetByFloor("first-get/floor", FirstGetByFloor);

}  // namespace

void RegisterFreshProcess(const std::string& root) {
  constexpr double kTarget = 2.0;
  constexpr int kChildren = 41;
  CompareInChildren({.name = "first-get/2000-types",
                     .does = "in a fresh process: open the store and the types, read one type of "
                             "2,000, get one object",
                     .targetRatio = kTarget},
                    firstGetByLibrary, firstGetByFloor, root, kChildren);
}

}  // namespace Benchmarks
