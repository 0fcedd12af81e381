#include "benchmarks.h"
#include "comparison.h"
#include "measured_host.h"
#include "samples.h"

#include <array>
#include <memory>
#include <string>

namespace Benchmarks {
namespace {

using TarnConfigStore::ConfigStoreObject;

// Both sides write two objects in turn, so that every write changes the row.
using LibraryObjects = std::array<std::shared_ptr<ConfigStoreObject>, 2>;
using FloorObjects = std::array<std::unique_ptr<FloorObject>, 2>;

struct Sample {
  const char* key;
  std::string (*textOf)(unsigned variant);
};
const Sample kSmall = {Host::kWritten, [](unsigned variant) { return ObjectText(variant); }};
const Sample kMegabyte = {Host::kMegabyte, MegabyteText};

LibraryObjects MakeLibraryObjects(const Sample& sample) {
  LibraryObjects objects;
  for (unsigned i = 0; i < objects.size(); ++i) {
    objects[i] = std::make_shared<ConfigStoreObject>(IdOf(sample.key));
    objects[i]->SetData(sample.textOf(i).c_str());
  }
  return objects;
}

FloorObjects MakeFloorObjects(const Sample& sample) {
  FloorObjects objects;
  for (unsigned i = 0; i < objects.size(); ++i) {
    objects[i] = FloorObject::Make({}, sample.textOf(i));
  }
  return objects;
}

void SetByLibrary(Roads& roads, const Sample& sample, benchmark::State& state) {
  const LibraryObjects objects = MakeLibraryObjects(sample);
  std::size_t turn = 0;
  Measure(state, [&] {
    roads.library->Set(objects[++turn % objects.size()], TarnConfigStore::EXTERNAL);
    return turn;
  });
}

void SetByFloor(Roads& roads, const Sample& sample, const FloorType& type,
                benchmark::State& state) {
  const FloorObjects objects = MakeFloorObjects(sample);
  const TarnConfigStore::ConfigStoreObjectId id = IdOf(sample.key);
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

void RegisterInTransaction(Roads& roads, const std::string& root, const Sample& sample,
                           const Comparison& comparison, int repetitions) {
  const auto type = std::make_shared<FloorType>(root, IdOf(sample.key));
  const Sides sides = Compare(
      comparison,
      [&roads, &sample](benchmark::State& state) {
        TarnConfigStore::ConfigStoreTransaction transaction(roads.library);
        SetByLibrary(roads, sample, state);
        transaction.Commit();
      },
      [&roads, &sample, type](benchmark::State& state) {
        roads.floor.Run("BEGIN IMMEDIATE");
        SetByFloor(roads, sample, *type, state);
        roads.floor.Run("COMMIT");
      });
  sides.library->Repetitions(repetitions);
  sides.floor->Repetitions(repetitions);
}

void RegisterDurable(Roads& roads, const std::shared_ptr<FloorType>& type) {
  constexpr double kTarget = 1.15;
  constexpr double kSeconds = 0.005;
  constexpr int kRepetitions = 101;
  const Sides sides = Compare(
      {.name = "set/durable",
       .does = "the same in a transaction of its own, one fdatasync",
       .targetRatio = kTarget},
      [&roads](benchmark::State& state) { SetByLibrary(roads, kSmall, state); },
      [&roads, type](benchmark::State& state) { SetByFloor(roads, kSmall, *type, state); });
  sides.library->MinTime(kSeconds)->Repetitions(kRepetitions);
  sides.floor->MinTime(kSeconds)->Repetitions(kRepetitions);
}

}  // namespace

void RegisterSets(Roads& roads, const std::string& root) {
  constexpr double kTarget = 1.1;
  RegisterInTransaction(roads, root, kSmall,
                        {.name = "set/in-transaction",
                         .does = "clean, validate by the compiled schema, read IS_BOOT, serialise, "
                                 "replace the row; no fsync",
                         .targetRatio = kTarget},
                        401);
  const auto type = std::make_shared<FloorType>(root, IdOf(Host::kWritten));
  RegisterDurable(roads, type);
  RegisterUpdate(roads, type);
  RegisterInTransaction(roads, root, kMegabyte,
                        {.name = "set/1MB",
                         .does = "the same with an object of 1 MB in 2,500 members",
                         .targetRatio = kTarget},
                        31);
}

}  // namespace Benchmarks
