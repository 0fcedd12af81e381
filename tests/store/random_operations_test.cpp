// The store beside a plain map: both are driven with the same random operations, and hold the same
// after each.
#include "objects/access.h"
#include "support/random.h"
#include "support/sanitized.h"
#include "support/store_fixture.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <set>

namespace TarnConfigStore {
namespace {

// What is in an object, by path: "u1", "vitals/v", "ports/a" for an element and "ports/a/u" in it.
using Members = std::map<std::string, int>;

constexpr const char* kLeaves[] = {"u1",        "u2",        "v1",        "v2",        "c1",
                                   "c2",        "vitals/v",  "vitals/x",  "caches/c",  "caches/x",
                                   "either/v",  "either/x",  "ports/a/u", "ports/a/v", "ports/a/c",
                                   "ports/b/u", "ports/b/v", "ports/b/c"};

enum Layer { AUTOMATIC, CACHED, VITAL, USER, LAYERS };

// A member's letter tells its part.
Layer LayerOf(const std::string& path, USERDATA_CONTEXT context) {
  const char letter = path[path.rfind('/') + 1];
  return letter == 'v' ? VITAL : letter == 'c' ? CACHED : context == EXTERNAL ? USER : AUTOMATIC;
}

bool IsUnder(const std::string& path, const std::string& around) {
  return path.size() > around.size() && path.rfind(around, 0) == 0;
}

bool IsPort(const std::string& path) {
  return IsUnder(path, "ports/") && path.size() == 7;
}

// A list goes with all its elements to each part that gets anything of one; an element of nothing
// but its id is the user's.
std::map<Layer, Members> Divide(const Members& members, USERDATA_CONTEXT context) {
  std::map<Layer, Members> parts;
  std::set<Layer> withPorts;
  for (auto member = members.begin(); member != members.end(); ++member) {
    const auto next = std::next(member);
    if (!IsPort(member->first)) {
      const Layer layer = LayerOf(member->first, context);
      parts[layer].insert(*member);
      if (IsUnder(member->first, "ports/")) {
        withPorts.insert(layer);
      }
    } else if (next == members.end() || !IsUnder(next->first, member->first)) {
      withPorts.insert(LayerOf("u", context));
    }
  }
  for (const Layer layer : withPorts) {
    std::copy_if(members.begin(), members.end(), std::inserter(parts[layer], parts[layer].end()),
                 [](const auto& member) { return IsPort(member.first); });
  }
  return parts;
}

struct Row {
  std::array<std::optional<Members>, LAYERS> layers;
  int revision = 0;

  std::optional<Members> Merged() const {
    std::optional<Members> merged;
    for (const auto& layer : layers) {
      if (layer) {
        Members over = *layer;
        over.merge(merged.value_or(Members()));
        merged = over;
      }
    }
    return merged;
  }
};

using Instances = std::map<std::string, Members>;

class Model : public std::map<std::string, Row> {
 public:
  void Set(const std::string& id, const Members& members, USERDATA_CONTEXT context,
           bool keepsTheRest = false) {
    if (members.empty()) {
      return;
    }
    Row& row = (*this)[id];
    row.layers = keepsTheRest ? row.layers : decltype(row.layers)();
    for (auto& [layer, part] : Divide(members, context)) {
      Members merged = part;
      merged.merge(row.layers[layer].value_or(Members()));
      row.layers[layer] = merged;
    }
    ++row.revision;
  }
  void SetLayer(const std::string& id, const Members& members, Layer layer) {
    if (IsWritten(layer, members)) {
      (*this)[id].layers[layer] = members;
      ++(*this)[id].revision;
    }
  }
  void SetLayers(const Instances& instances, Layer layer) {
    if (std::none_of(instances.begin(), instances.end(),
                     [layer](const auto& each) { return IsWritten(layer, each.second); })) {
      return;
    }
    for (auto& [id, row] : *this) {
      row.layers[layer].reset();
    }
    for (const auto& [id, members] : instances) {
      SetLayer(id, members, layer);
    }
  }
  void SetAll(const Instances& instances, USERDATA_CONTEXT context) {
    Model replaced;
    for (const auto& [id, members] : instances) {
      replaced.Set(id, members, context);
    }
    if (!replaced.empty()) {
      for (auto& [id, row] : replaced) {
        row.revision += count(id) != 0 ? at(id).revision : 0;
      }
      *this = replaced;
    }
  }
  void Delete(const std::string& id, const Members& conditions) {
    std::erase_if(*this, [&](const auto& entry) {
      const Members merged = entry.second.Merged().value_or(Members());
      return (id.empty() || id == entry.first) &&
             std::includes(merged.begin(), merged.end(), conditions.begin(), conditions.end()) &&
             (conditions.empty() || entry.second.Merged());
    });
  }

 private:
  // Vital and cached values may be nothing but an instance id.
  static bool IsWritten(Layer layer, const Members& members) {
    return layer == VITAL || layer == CACHED || !members.empty();
  }
};

class RandomOperations : public TestSupport::StoreFixture {
 protected:
  RandomOperations() { InstallType(host_, TestSupport::kManyWaysType); }

  std::string AnyId() { return std::string(1, static_cast<char>('a' + random_.Below(6))); }
  // Some of the members of these parts.
  Members AnyMembers(const std::string& letters) {
    Members members;
    for (const std::string path : kLeaves) {
      const Layer layer = LayerOf(path, EXTERNAL);
      const char letter = layer == VITAL ? 'v' : layer == CACHED ? 'c' : 'u';
      if (letters.find(letter) != std::string::npos && random_.OneIn(4)) {
        members[path] = static_cast<int>(random_.Below(3));
        if (path.size() == 9) {
          members[path.substr(0, 7)] = 0;
        }
      }
    }
    const bool mayBeIdsAlone = letters[0] == 'u';
    if (random_.OneIn(3) &&
        (mayBeIdsAlone || members.lower_bound("ports") != members.lower_bound("q"))) {
      members["ports/c"] = 0;
    }
    if (random_.OneIn(3) && mayBeIdsAlone) {
      members[random_.OneIn(2) ? "ids/x" : "ids/y"] = 0;
    }
    return members;
  }
  Instances AnyInstances(const std::string& letters) {
    Instances instances;
    for (unsigned long i = random_.Below(4) + 1; i > 0; --i) {
      instances[AnyId()] = AnyMembers(letters);
    }
    return instances;
  }

  static Id ModelId(const std::string& instance) { return {"ways", "test", "tarn", instance}; }
  // The object, or the one within it, in which a path ends.
  static ObjectHandle At(const ObjectHandle& object, const std::string& path) {
    const std::size_t slash = path.find('/');
    if (slash == std::string::npos) {
      return object;
    }
    const std::string name = path.substr(0, slash);
    const bool isList = name == "ports" || name == "ids";
    const SubObjectId id(name, isList ? path.substr(slash + 1, 1) : "");
    const auto there = object->GetSubObject(id);
    return there ? there : object->CreateSubObject(id);
  }
  ObjectHandle MakeObject(const std::string& id, const Members& members) {
    auto object = std::make_shared<ConfigStoreObject>(ModelId(id));
    for (const auto& [path, value] : members) {
      const auto at = At(object, path);
      if (!IsPort(path) && path.rfind("ids", 0) != 0) {
        at->SetValue(path.substr(path.rfind('/') + 1).c_str(), value);
      }
      if (path == "u1" && random_.OneIn(2)) {
        const Json::Value null;
        Internal::Access::Of(*object).SetValueEx("null", &null);
      }
    }
    return object;
  }
  Objects MakeObjects(const Instances& instances) {
    Objects objects;
    for (const auto& [id, members] : instances) {
      objects.push_back(MakeObject(id, members));
    }
    return objects;
  }

  // One operation on both.
  void Step() {
    const std::string id = AnyId();
    const USERDATA_CONTEXT context = random_.OneIn(2) ? EXTERNAL : AUTO_CONFIG;
    switch (random_.Below(16)) {
      case 0:
      case 1: {
        const Members members = AnyMembers("uvc");
        store_->Set(MakeObject(id, members), context);
        return model_.Set(id, members, context);
      }
      case 2:
      case 3:
      case 4: {
        const Members members = AnyMembers("uvc");
        store_->Update(MakeObject(id, members), context);
        return model_.Set(id, members, context, true);
      }
      case 5: {
        const Instances instances = AnyInstances("uvc");
        store_->SetInstances(MakeObjects(instances), context);
        return model_.SetAll(instances, context);
      }
      case 6:
        store_->Delete(ModelId(id));
        model_.erase(id);
        return;
      case 7: {
        Members conditions = AnyMembers("uc");
        std::erase_if(conditions, [](const auto& each) { return each.first.size() > 2; });
        const std::string instance = random_.OneIn(2) ? id : "";
        const auto filter = Filter(ModelId(instance));
        for (const auto& [name, value] : conditions) {
          filter->SetValue(name.c_str(), value);
        }
        store_->DeleteInstances(filter);
        return model_.Delete(instance, conditions);
      }
      case 8:
      case 9:
      case 10:
      case 11:
        return WritePart(id, context);
      default:
        return ChangeTransaction();
    }
  }

  // One part of one instance, or of all.
  void WritePart(const std::string& id, USERDATA_CONTEXT context) {
    const std::string letter(1, "uvc"[random_.Below(3)]);
    const Layer layer = LayerOf(letter, context);
    if (random_.OneIn(2)) {
      const Members members = AnyMembers(letter);
      const ObjectHandle object = MakeObject(id, members);
      letter == "u"   ? store_->SetUserData(object, context)
      : letter == "v" ? store_->SetVitalData(object)
                      : store_->SetCachedData(object);
      return model_.SetLayer(id, members, layer);
    }
    const Instances instances = AnyInstances(letter);
    const Objects objects = MakeObjects(instances);
    letter == "u"   ? store_->SetUserDataInstances(objects, context)
    : letter == "v" ? store_->SetVitalDataInstances(objects)
                    : store_->SetCachedDataInstances(objects);
    model_.SetLayers(instances, layer);
  }

  // Begins a level, or ends the innermost.
  void ChangeTransaction() {
    if (saved_.size() < 3 && !random_.OneIn(3)) {
      ASSERT_EQ(store_->BeginTransaction(), 0);
      saved_.push_back(model_);
    } else if (!saved_.empty()) {
      if (random_.OneIn(2)) {
        store_->CommitTransaction();
      } else {
        ASSERT_EQ(store_->CancelTransaction(), 0);
        model_ = saved_.back();
      }
      saved_.pop_back();
    }
  }

  // What a caller can see of either, a line for each object and each revision.
  static std::string Line(const std::string& id, const Members& members) {
    std::string line = id;
    for (const auto& [path, value] : members) {
      line += " " + path + "=" + std::to_string(value);
    }
    return line + "\n";
  }
  std::string Expected() const {
    std::string text;
    std::string revisions;
    for (const auto& [id, row] : model_) {
      const auto merged = row.Merged();
      text += merged ? Line(id, *merged) : "";
      revisions += id + "#" + std::to_string(row.revision) + " ";
    }
    return text + revisions;
  }
  static void AddMembers(const Json::Value& object, const std::string& around, Members& members) {
    for (const auto& [name, value] : object.GetObject()) {
      const std::string path = around + name.GetString();
      if (value.IsInt()) {
        members[path] = value.GetInt();
      } else if (value.IsObject()) {
        AddMembers(value, path + "/", members);
      } else if (value.IsArray()) {
        for (const Json::Value& element : value.GetArray()) {
          const std::string at = path + "/" + element["id"].GetString();
          EXPECT_TRUE(members.emplace(at, 0).second) << at << " is there twice";
          AddMembers(element, at + "/", members);
        }
      }
    }
  }
  std::string Seen() {
    std::string text;
    for (const auto& object : store_->GetInstances(Filter(ModelId("")))) {
      Members members;
      AddMembers(Internal::Access::Of(*object).GetRoot(), "", members);
      text += Line(object->GetConfigStoreObjectId().instanceId, members);
      EXPECT_EQ(Data(store_->Get(object->GetConfigStoreObjectId())), object->GetData());
    }
    for (const auto& [id, revision] : store_->GetInstancesRevision(ModelId(""))) {
      text += id + "#" + std::to_string(revision) + " ";
    }
    return text;
  }

  TestSupport::Random random_;
  Model model_;
  std::vector<Model> saved_;
};

TEST_F(RandomOperations, LeaveTheStoreAsTheyLeaveAMap) {
  CSLogger::SetLevel(0);
  for (int i = 0; i < TestSupport::Rounds(10000); ++i) {
    Step();
    ASSERT_EQ(Seen(), Expected()) << "after operation " << i << " with seed " << random_.Seed();
  }
}

}  // namespace
}  // namespace TarnConfigStore
