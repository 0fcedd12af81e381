#include "benchmarks.h"
#include "comparison.h"
#include "measured_host.h"
#include "samples.h"

#include <array>
#include <functional>

namespace Benchmarks {
namespace {

using TarnConfigStore::ConfigStoreObject;

// Both sides write two objects in turn, so that every write changes the row.
using LibraryObjects = std::array<std::shared_ptr<ConfigStoreObject>, 2>;
using FloorObjects = std::array<std::unique_ptr<FloorObject>, 2>;

LibraryObjects MakeLibraryObjects() {
  LibraryObjects objects;
  for (unsigned i = 0; i < objects.size(); ++i) {
    objects[i] = std::make_shared<ConfigStoreObject>(IdOf(Host::kWritten));
    objects[i]->SetData(ObjectText(i).c_str());
  }
  return objects;
}

FloorObjects MakeFloorObjects() {
  FloorObjects objects;
  for (unsigned i = 0; i < objects.size(); ++i) {
    objects[i] = FloorObject::Make({}, ObjectText(i));
  }
  return objects;
}

void SetByLibrary(Roads& roads, benchmark::State& state) {
  const LibraryObjects objects = MakeLibraryObjects();
  std::size_t turn = 0;
  Measure(state, [&] {
    roads.library->Set(objects[++turn % objects.size()], TarnConfigStore::EXTERNAL);
    return turn;
  });
}

void SetByFloor(Roads& roads, const FloorType& type, benchmark::State& state) {
  const FloorObjects objects = MakeFloorObjects();
  const TarnConfigStore::ConfigStoreObjectId id = IdOf(Host::kWritten);
  std::size_t turn = 0;
  Measure(state, [&] {
    roads.floor.Set(id, objects[++turn % objects.size()]->Data(), type);
    return turn;
  });
}

void RegisterUpdate(Roads& roads, const std::shared_ptr<FloorType>& type) {
  constexpr double kTarget = 1.25;
  Compare(
      {.name = "update/one-member",
       .does = "read the row, lay one member over it, validate the whole, serialise, write; in a "
               "transaction",
       .targetRatio = kTarget},
      [&roads](benchmark::State& state) {
        TarnConfigStore::ConfigStoreTransaction transaction(roads.library);
        const auto change = std::make_shared<ConfigStoreObject>(IdOf(Host::kWritten));
        int port = 0;
        Measure(state, [&] {
          change->SetValue("port", 1 + ++port % 2);
          roads.library->Update(change, TarnConfigStore::EXTERNAL);
          return port;
        });
        transaction.Commit();
      },
      [&roads, type](benchmark::State& state) {
        roads.floor.Run("BEGIN IMMEDIATE");
        const TarnConfigStore::ConfigStoreObjectId id = IdOf(Host::kWritten);
        const auto change = FloorObject::Make({}, R"({"port":1})");
        int port = 0;
        Measure(state, [&] {
          change->Data()["port"].SetInt(1 + ++port % 2);
          roads.floor.Update(id, change->Data(), *type);
          return port;
        });
        roads.floor.Run("COMMIT");
      });
}

}  // namespace

void RegisterSets(Roads& roads, const std::string& root) {
  const auto type = std::make_shared<FloorType>(root, IdOf(Host::kWritten));
  constexpr double kTargetInTransaction = 1.1;
  Compare(
      {.name = "set/in-transaction",
       .does = "clean, validate by the compiled schema, read IS_BOOT, serialise, replace the "
               "row; no fsync",
       .targetRatio = kTargetInTransaction},
      [&roads](benchmark::State& state) {
        TarnConfigStore::ConfigStoreTransaction transaction(roads.library);
        SetByLibrary(roads, state);
        transaction.Commit();
      },
      [&roads, type](benchmark::State& state) {
        roads.floor.Run("BEGIN IMMEDIATE");
        SetByFloor(roads, *type, state);
        roads.floor.Run("COMMIT");
      });
  constexpr double kTargetDurable = 1.15;
  constexpr double kSeconds = 0.005;
  constexpr int kRepetitions = 101;
  const Sides durable = Compare(
      {.name = "set/durable",
       .does = "the same in a transaction of its own, one fdatasync",
       .targetRatio = kTargetDurable},
      [&roads](benchmark::State& state) { SetByLibrary(roads, state); },
      [&roads, type](benchmark::State& state) { SetByFloor(roads, *type, state); });
  durable.library->MinTime(kSeconds)->Repetitions(kRepetitions);
  durable.floor->MinTime(kSeconds)->Repetitions(kRepetitions);
  RegisterUpdate(roads, type);
}

}  // namespace Benchmarks
