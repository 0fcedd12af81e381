// Objects that are built member by member, and instance by instance.
#include "benchmarks.h"
#include "comparison.h"
#include "measured_host.h"
#include "samples.h"

#include <stdexcept>
#include <unordered_map>
#include <unordered_set>

namespace Benchmarks {
namespace {

using TarnConfigStore::ConfigStoreObject;
using TarnConfigStore::SubObjectId;

std::vector<std::string> Names(int count) {
  std::vector<std::string> names;
  for (int i = 0; i < count; ++i) {
    names.push_back(InstanceId(static_cast<std::size_t>(i)));
  }
  return names;
}

ConfigStoreObject MakeParts(const std::vector<std::string>& names) {
  ConfigStoreObject object(IdOf(Host::kLarge));
  for (const std::string& name : names) {
    object.CreateSubObject(SubObjectId(kParts, name));
  }
  return object;
}

// By hand: the array, and a set of the ids that are in it.
Json::Document MakePartsByHand(const std::vector<std::string>& names) {
  Json::Document document(rapidjson::kObjectType);
  auto& allocator = document.GetAllocator();
  document.AddMember(Json::Reference(kParts), Json::Value(rapidjson::kArrayType), allocator);
  Json::Value& parts = document[kParts];
  std::unordered_set<std::string> known;
  for (const std::string& name : names) {
    if (!known.insert(name).second) {
      throw std::runtime_error("floor: there already: " + name);
    }
    Json::Value part(rapidjson::kObjectType);
    part.AddMember("id", Json::Copy(name, allocator), allocator);
    parts.PushBack(part, allocator);
  }
  return document;
}

Json::Document SetMembersByHand(const std::vector<std::string>& names) {
  Json::Document document(rapidjson::kObjectType);
  auto& allocator = document.GetAllocator();
  std::unordered_map<std::string, rapidjson::SizeType> known;
  for (const std::string& name : names) {
    if (known.emplace(name, document.MemberCount()).second) {
      document.AddMember(Json::Copy(name, allocator), Json::Value(1), allocator);
    }
  }
  return document;
}

// A scan for each of them would make four times as many take sixteen times as long.
void RegisterBuilding(int count) {
  constexpr double kTarget = 10;
  const std::string number = std::to_string(count);
  const auto repeat = [](const Sides& sides) {
    constexpr int kRepetitions = 31;
    sides.library->Repetitions(kRepetitions);
    sides.floor->Repetitions(kRepetitions);
  };
  const auto byHand = [names = Names(count)](benchmark::State& state) {
    Measure(state, [&] { return MakePartsByHand(names); });
  };
  repeat(Compare(
      {.name = "objects/create-" + number,
       .does = "make so many sub-objects of one object, each found to be new",
       .targetRatio = kTarget,
       .items = count},
      [names = Names(count)](benchmark::State& state) {
        Measure(state, [&] { return MakeParts(names); });
      },
      byHand));
  repeat(Compare(
      {.name = "objects/find-" + number,
       .does = "look so many sub-objects up by their ids, against making them by hand",
       .targetRatio = kTarget,
       .items = count},
      [names = Names(count)](benchmark::State& state) {
        ConfigStoreObject object = MakeParts(names);
        Measure(state, [&] {
          bool found = true;
          for (const std::string& name : names) {
            found = object.GetSubObject(SubObjectId(kParts, name)) && found;
          }
          return found;
        });
      },
      byHand));
  repeat(Compare(
      {.name = "objects/set-" + number,
       .does = "give one object so many members, one by one",
       .targetRatio = kTarget,
       .items = count},
      [names = Names(count)](benchmark::State& state) {
        Measure(state, [&] {
          ConfigStoreObject object(IdOf(Host::kLarge));
          for (const std::string& name : names) {
            object.SetValue(name.c_str(), 1);
          }
          return object;
        });
      },
      [names = Names(count)](benchmark::State& state) {
        Measure(state, [&] { return SetMembersByHand(names); });
      }));
}

}  // namespace

void RegisterLargeObjects() {
  for (const int count : {5000, 20000}) {
    RegisterBuilding(count);
  }
}

}  // namespace Benchmarks
