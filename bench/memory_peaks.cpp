// How far a process grows while it does something large.
#include "tarnconfigstore/config_store.h"
#include "tarnconfigstore/documents.h"

#include "benchmarks.h"
#include "child_benchmarks.h"
#include "floor_export.h"
#include "floor_store.h"
#include "measured_host.h"
#include "samples.h"

#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace Benchmarks {
namespace {

using TarnConfigStore::ConfigStoreObject;
using TarnConfigStore::ConfigStoreObjectId;

constexpr std::size_t kFew = 1000;
constexpr std::size_t kWritten = 10000;

// getrusage would tell of this process's parent, too.
double PeakBytes() {
  constexpr double kKilobyte = 1024;
  std::ifstream status("/proc/self/status");
  for (std::string name; status >> name;) {
    if (name == "VmHWM:") {
      double kilobytes = 0;
      status >> kilobytes;
      return kKilobyte * kilobytes;
    }
  }
  throw std::runtime_error("/proc/self/status tells no peak");
}

// Beyond what the same takes for few, which opens the store and fills its page cache.
template <class Operation>
double PeakOf(Operation operation, std::size_t many) {
  operation(kFew);
  const double before = PeakBytes();
  if (operation(many) == 0) {
    throw std::runtime_error("nothing was done");
  }
  return PeakBytes() - before;
}

std::shared_ptr<TarnConfigStore::ConfigStore> Library() {
  return TarnConfigStore::ConfigStore::GetStore(TarnConfigStore::sGlobalNamespace);
}

double KeepOneByLibrary(const std::string& /*root*/) {
  return PeakOf(
      [store = Library()](std::size_t count) {
        const auto filter =
            std::make_shared<TarnConfigStore::FilterSpecObject>(IdOf(Host::KeyOfInstances(count)));
        filter->SetValue("id", InstanceId(count / 2));
        return store->GetInstances(filter).size();
      },
      Host::kMany);
}

double KeepOneByFloor(const std::string& root) {
  return PeakOf(
      [store = std::make_shared<FloorStore>(root)](std::size_t count) {
        return store
            ->GetInstancesWhere(IdOf(Host::KeyOfInstances(count)), "id", InstanceId(count / 2))
            .size();
      },
      Host::kMany);
}

double ReadAllByLibrary(const std::string& /*root*/) {
  return PeakOf(
      [store = Library()](std::size_t count) {
        return store
            ->GetInstances(std::make_shared<TarnConfigStore::FilterSpecObject>(
                IdOf(Host::KeyOfInstances(count))))
            .size();
      },
      Host::kMany);
}

double ReadAllByFloor(const std::string& root) {
  return PeakOf(
      [store = std::make_shared<FloorStore>(root)](std::size_t count) {
        return store->GetInstances(IdOf(Host::KeyOfInstances(count))).size();
      },
      Host::kMany);
}

// The objects count, too: whoever writes many holds them.
double WriteAllByLibrary(const std::string& /*root*/) {
  return PeakOf(
      [store = Library()](std::size_t count) {
        std::vector<std::shared_ptr<ConfigStoreObject>> objects;
        for (std::size_t i = 0; i < count; ++i) {
          const ConfigStoreObjectId id = IdOf(Host::KeyOfWrittenInstances(count), InstanceId(i));
          objects.push_back(std::make_shared<ConfigStoreObject>(id));
          objects.back()->SetData(ObjectText(7, id.instanceId).c_str());
        }
        store->SetInstances(objects, TarnConfigStore::EXTERNAL);
        return objects.size();
      },
      kWritten);
}

double WriteAllByFloor(const std::string& root) {
  return PeakOf(
      [store = std::make_shared<FloorStore>(root), &root](std::size_t count) {
        const ConfigStoreObjectId id = IdOf(Host::KeyOfWrittenInstances(count));
        const FloorType type(root, id);
        std::vector<std::unique_ptr<FloorObject>> objects;
        for (std::size_t i = 0; i < count; ++i) {
          const std::string name = InstanceId(i);
          objects.push_back(FloorObject::Make({.instanceId = name}, ObjectText(7, name)));
        }
        store->SetInstances(id, objects, type);
        return objects.size();
      },
      kWritten);
}

double ExportByLibrary(const std::string& /*root*/) {
  return PeakOf(
      [](std::size_t count) {
        std::size_t written = 0;
        TarnConfigStore::ExportConfig(
            IdOf(Host::KeyOfInstances(count)), {},
            [&written](std::string_view piece) { written += piece.size(); });
        return written;
      },
      Host::kMany);
}

double ExportByFloor(const std::string& root) {
  return PeakOf([floor = std::make_shared<FloorExport>(root)](
                    std::size_t count) { return floor->Run(IdOf(Host::KeyOfInstances(count))); },
                Host::kMany);
}

const ChildTask keepOneLibrary("peak-keep-one/library", KeepOneByLibrary);
const ChildTask keepOneFloor("peak-keep-one/floor", KeepOneByFloor);
const ChildTask readAllLibrary("peak-read-all/library", ReadAllByLibrary);
const ChildTask readAllFloor("peak-read-all/floor", ReadAllByFloor);
const ChildTask writeAllLibrary("peak-write-all/library", WriteAllByLibrary);
const ChildTask writeAllFloor("peak-write-all/floor", WriteAllByFloor);
const ChildTask exportLibrary("peak-export/library", ExportByLibrary);
const ChildTask exportFloor("peak-export/floor", ExportByFloor);

}  // namespace

void RegisterMemoryPeaks(const std::string& root, Extent extent) {
  constexpr int kChildren = 3;
  constexpr double kPeakTarget = 15e6;
  CompareInChildren({.name = "peak/100000-keep-one",
                     .does = "growth of the process while one of 100,000 instances is kept",
                     .targetValue = kPeakTarget,
                     .unit = Unit::BYTES},
                    keepOneLibrary, keepOneFloor, root, kChildren);
  CompareInChildren({.name = "peak/10000-written",
                     .does = "growth while 10,000 objects are made and written by SetInstances",
                     .unit = Unit::BYTES,
                     .items = static_cast<int>(kWritten)},
                    writeAllLibrary, writeAllFloor, root, kChildren);
  if (extent == Extent::ALL) {
    CompareInChildren({.name = "peak/100000-read",
                       .does = "growth while 100,000 instances are read and held",
                       .unit = Unit::BYTES,
                       .items = static_cast<int>(Host::kMany)},
                      readAllLibrary, readAllFloor, root, kChildren);
    CompareInChildren({.name = "peak/100000-exported",
                       .does = "growth while 100,000 instances are exported in pieces",
                       .targetValue = kPeakTarget,
                       .unit = Unit::BYTES},
                      exportLibrary, exportFloor, root, kChildren);
  }
}

}  // namespace Benchmarks
