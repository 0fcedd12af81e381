// The store beside a plain map: both are driven with the same random operations, and hold the same
// after each.
#include "support/store_fixture.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <iostream>
#include <map>
#include <optional>
#include <random>
#include <sstream>

namespace TarnConfigStore {
namespace {

constexpr int kOperations = 10000;

constexpr const char* kType = R"({
  "component": "tarn", "group": "test", "key": "model", "version": "1.0",
  "schema": { "type": "object", "properties": {
    "id": { "type": "string", "instanceId": true },
    "u1": { "type": "integer" }, "u2": { "type": "integer" },
    "v1": { "type": "integer", "vital": true }, "v2": { "type": "integer", "vital": true },
    "c1": { "type": "integer", "cached": true }, "c2": { "type": "integer", "cached": true } } }
})";

using Members = std::map<std::string, int>;

enum Layer { AUTOMATIC, CACHED, VITAL, USER, LAYERS };

struct Row {
  std::array<std::optional<Members>, LAYERS> layers;
  int revision = 0;

  std::optional<Members> Merged() const {
    std::optional<Members> merged;
    for (const auto& layer : layers) {
      if (layer) {
        merged = merged.value_or(Members());
        for (const auto& [name, value] : *layer) {
          (*merged)[name] = value;
        }
      }
    }
    return merged;
  }
};

using Model = std::map<std::string, Row>;
using Instances = std::map<std::string, Members>;

Layer LayerOf(const std::string& member, USERDATA_CONTEXT context) {
  switch (member[0]) {
    case 'v':
      return VITAL;
    case 'c':
      return CACHED;
    default:
      return context == EXTERNAL ? USER : AUTOMATIC;
  }
}

std::map<Layer, Members> Divide(const Members& members, USERDATA_CONTEXT context) {
  std::map<Layer, Members> parts;
  for (const auto& [name, value] : members) {
    parts[LayerOf(name, context)][name] = value;
  }
  return parts;
}

void ModelSet(Model& model, const std::string& id, const Members& members,
              USERDATA_CONTEXT context) {
  if (members.empty()) {
    return;
  }
  Row& row = model[id];
  row.layers = {};
  for (const auto& [layer, part] : Divide(members, context)) {
    row.layers[layer] = part;
  }
  ++row.revision;
}

void ModelUpdate(Model& model, const std::string& id, const Members& members,
                 USERDATA_CONTEXT context) {
  if (members.empty()) {
    return;
  }
  Row& row = model[id];
  for (const auto& [layer, part] : Divide(members, context)) {
    Members merged = part;
    if (row.layers[layer]) {
      merged.insert(row.layers[layer]->begin(), row.layers[layer]->end());
    }
    row.layers[layer] = merged;
  }
  ++row.revision;
}

// Vital and cached values may be nothing but an instance id.
bool Written(Layer layer, const Members& members) {
  return layer == VITAL || layer == CACHED || !members.empty();
}

void ModelSetLayer(Model& model, const std::string& id, const Members& members, Layer layer) {
  if (Written(layer, members)) {
    model[id].layers[layer] = members;
    ++model[id].revision;
  }
}

void ModelSetLayers(Model& model, const Instances& instances, Layer layer) {
  const auto written = [layer](const auto& each) { return Written(layer, each.second); };
  if (std::none_of(instances.begin(), instances.end(), written)) {
    return;
  }
  for (auto& [id, row] : model) {
    row.layers[layer].reset();
  }
  for (const auto& [id, members] : instances) {
    ModelSetLayer(model, id, members, layer);
  }
}

void ModelSetAll(Model& model, const Instances& instances, USERDATA_CONTEXT context) {
  Model replaced;
  for (const auto& [id, members] : instances) {
    ModelSet(replaced, id, members, context);
    if (replaced.count(id) != 0 && model.count(id) != 0) {
      replaced[id].revision += model[id].revision;
    }
  }
  if (!replaced.empty()) {
    model = replaced;
  }
}

class RandomOperations : public TestSupport::StoreFixture {
 protected:
  RandomOperations() {
    InstallType(host_, kType);
    const char* asked = std::getenv("TARN_TEST_SEED");
    seed_ = asked == nullptr ? std::random_device()() : std::strtoul(asked, nullptr, 10);
    random_.seed(seed_);
    std::cout << "seed " << seed_ << " (TARN_TEST_SEED repeats it)" << std::endl;
  }

  unsigned long Below(unsigned long limit) { return random_() % limit; }
  std::string AnyId() { return std::string(1, static_cast<char>('a' + Below(6))); }
  USERDATA_CONTEXT AnyContext() { return Below(2) == 0 ? EXTERNAL : AUTO_CONFIG; }
  // Some of the members whose names start with one of the letters.
  Members AnyMembers(const std::string& letters) {
    Members members;
    for (const char letter : letters) {
      for (const char digit : {'1', '2'}) {
        if (Below(3) == 0) {
          members[{letter, digit}] = static_cast<int>(Below(3));
        }
      }
    }
    return members;
  }
  Instances AnyInstances(const std::string& letters) {
    Instances instances;
    for (unsigned long i = Below(4) + 1; i > 0; --i) {
      instances[AnyId()] = AnyMembers(letters);
    }
    return instances;
  }

  static ConfigStoreObjectId Id(const std::string& instance) {
    return {"model", "test", "tarn", instance};
  }
  static ObjectHandle MakeObject(const std::string& id, const Members& members) {
    auto object = std::make_shared<ConfigStoreObject>(Id(id));
    for (const auto& [name, value] : members) {
      object->SetValue(name.c_str(), value);
    }
    return object;
  }
  static std::vector<ObjectHandle> MakeObjects(const Instances& instances) {
    std::vector<ObjectHandle> objects;
    for (const auto& [id, members] : instances) {
      objects.push_back(MakeObject(id, members));
    }
    return objects;
  }

  // One operation on both.
  void Step() {
    const std::string id = AnyId();
    const USERDATA_CONTEXT context = AnyContext();
    const Layer own = context == EXTERNAL ? USER : AUTOMATIC;
    switch (Below(16)) {
      case 0:
      case 1: {
        const Members members = AnyMembers("uvc");
        store_->Set(MakeObject(id, members), context);
        return ModelSet(model_, id, members, context);
      }
      case 2:
      case 3:
      case 4: {
        const Members members = AnyMembers("uvc");
        store_->Update(MakeObject(id, members), context);
        return ModelUpdate(model_, id, members, context);
      }
      case 5: {
        const Members members = AnyMembers("u");
        store_->SetUserData(MakeObject(id, members), context);
        return ModelSetLayer(model_, id, members, own);
      }
      case 6: {
        const Members members = AnyMembers("v");
        store_->SetVitalData(MakeObject(id, members));
        return ModelSetLayer(model_, id, members, VITAL);
      }
      case 7: {
        const Members members = AnyMembers("c");
        store_->SetCachedData(MakeObject(id, members));
        return ModelSetLayer(model_, id, members, CACHED);
      }
      case 8: {
        const Instances instances = AnyInstances("uvc");
        store_->SetInstances(MakeObjects(instances), context);
        return ModelSetAll(model_, instances, context);
      }
      case 9: {
        const Instances instances = AnyInstances("u");
        store_->SetUserDataInstances(MakeObjects(instances), context);
        return ModelSetLayers(model_, instances, own);
      }
      case 10: {
        const bool vital = Below(2) == 0;
        const Instances instances = AnyInstances(vital ? "v" : "c");
        vital ? store_->SetVitalDataInstances(MakeObjects(instances))
              : store_->SetCachedDataInstances(MakeObjects(instances));
        return ModelSetLayers(model_, instances, vital ? VITAL : CACHED);
      }
      case 11:
        store_->Delete(Id(id));
        model_.erase(id);
        return;
      case 12: {
        const Members conditions = AnyMembers("uc");
        auto filter = std::make_shared<FilterSpecObject>(Id(Below(2) == 0 ? id : ""));
        for (const auto& [name, value] : conditions) {
          filter->SetValue(name.c_str(), value);
        }
        store_->DeleteInstances(filter);
        return ModelDelete(filter->GetConfigStoreObjectId().instanceId, conditions);
      }
      default:
        return ChangeTransaction();
    }
  }

  void ModelDelete(const std::string& id, const Members& conditions) {
    for (auto row = model_.begin(); row != model_.end();) {
      const std::optional<Members> merged = row->second.Merged();
      const bool meets =
          conditions.empty() ||
          (merged && std::all_of(conditions.begin(), conditions.end(), [&](const auto& condition) {
             const auto found = merged->find(condition.first);
             return found != merged->end() && found->second == condition.second;
           }));
      row = meets && (id.empty() || id == row->first) ? model_.erase(row) : std::next(row);
    }
  }

  // Begins a level, or ends the innermost.
  void ChangeTransaction() {
    if (saved_.size() < 3 && Below(3) != 0) {
      ASSERT_EQ(store_->BeginTransaction(), 0);
      saved_.push_back(model_);
    } else if (!saved_.empty()) {
      if (Below(2) == 0) {
        store_->CommitTransaction();
      } else {
        ASSERT_EQ(store_->CancelTransaction(), 0);
        model_ = saved_.back();
      }
      saved_.pop_back();
    }
  }

  static std::string Line(const std::string& id, const Members& members) {
    std::ostringstream line;
    line << id;
    for (const auto& [name, value] : members) {
      line << ' ' << name << '=' << value;
    }
    return line.str() + "\n";
  }
  // What a caller can see of either, a line for each object and each revision.
  std::string Expected() const {
    std::string text;
    for (const auto& [id, row] : model_) {
      if (const auto merged = row.Merged()) {
        text += Line(id, *merged);
      }
    }
    for (const auto& [id, row] : model_) {
      text += id + "#" + std::to_string(row.revision) + " ";
    }
    return text;
  }
  std::string Seen() {
    std::string text;
    for (const auto& object : store_->GetInstances(std::make_shared<FilterSpecObject>(Id("")))) {
      Members members;
      for (const char* name : {"u1", "u2", "v1", "v2", "c1", "c2"}) {
        int value = 0;
        if (object->GetValue(name, &value) != 0) {
          members[name] = value;
        }
      }
      text += Line(object->GetConfigStoreObjectId().instanceId, members);
      const auto alone = store_->Get(object->GetConfigStoreObjectId());
      EXPECT_EQ(alone ? alone->GetData() : "nothing", object->GetData());
    }
    for (const auto& [id, revision] : store_->GetInstancesRevision(Id(""))) {
      text += id + "#" + std::to_string(revision) + " ";
    }
    return text;
  }

  unsigned long seed_ = 0;
  std::mt19937_64 random_;
  Model model_;
  std::vector<Model> saved_;
};

TEST_F(RandomOperations, LeaveTheStoreAsTheyLeaveAMap) {
  CSLogger::SetLevel(0);
  for (int i = 0; i < kOperations; ++i) {
    Step();
    ASSERT_EQ(Seen(), Expected()) << "after operation " << i << " with seed " << seed_;
  }
}

}  // namespace
}  // namespace TarnConfigStore
