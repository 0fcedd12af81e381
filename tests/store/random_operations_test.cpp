// The store beside a plain map of rows: both are driven with the same random operations, and hold the
// same after each. How data are divided and merged, the map asks those who do it.
#include "objects/access.h"
#include "objects/config_store_object_impl.h"
#include "objects/division.h"
#include "objects/merge.h"
#include "objects/schema_lookup.h"
#include "store/removals.h"
#include "support/random_objects.h"
#include "support/sanitized.h"
#include "support/store_fixture.h"

namespace TarnConfigStore {
namespace {

using Internal::Access;
using Part = std::optional<std::string> ColumnValues::*;

struct Row {
  ColumnValues values;
  int revision = 0;
};

class RandomOperations : public TestSupport::StoreFixture {
 protected:
  RandomOperations() {
    InstallType(host_, TestSupport::kManyWaysType);
    schema_ = FindSchema(ModelId(""));
  }
  static Id ModelId(const std::string& instance) { return {"ways", "test", "tarn", instance}; }
  static std::string IdOf(const ObjectHandle& object) {
    return object->GetConfigStoreObjectId().instanceId;
  }
  ColumnValues Divided(const ObjectHandle& object, USERDATA_CONTEXT context) const {
    return DivideValue(Access::Of(*object).GetRoot(), *schema_, context);
  }
  ObjectHandle Merged(const std::string& id, const ColumnValues& values) const {
    const auto layer = [&](const std::optional<std::string>& text) {
      return text ? Object(ModelId(id), *text) : nullptr;
    };
    return MergeConfig(layer(values.automatic), layer(values.cached), layer(values.vital),
                       layer(values.user), schema_->GetSchemaPlace());
  }

  std::string AnyId() { return std::string(1, static_cast<char>('a' + random_.Below(6))); }
  // Data of all parts, or of one.
  ObjectHandle AnyObject(const std::string& id, Part part = nullptr) {
    const auto whole = Object(ModelId(id), objects_.Make(schema_->GetSchemaPlace(), id));
    return part == nullptr
               ? whole
               : Object(ModelId(id),
                        (Divided(whole, EXTERNAL).*part).value_or(R"({"id":")" + id + "\"}"));
  }
  Objects AnyInstances(Part part = nullptr) {
    Objects objects;
    for (char id = 'a'; id < 'g'; ++id) {
      if (random_.OneIn(2) || (id == 'f' && objects.empty())) {
        objects.push_back(AnyObject(std::string(1, id), part));
      }
    }
    return objects;
  }

  int NextRevision(const std::string& id) const {
    const auto row = model_.find(id);
    return row == model_.end() ? 1 : row->second.revision + 1;
  }

  // One operation on both. Writes take out of an object what is empty, and leave alone what then is.
  void Step() {
    const std::string id = AnyId();
    const USERDATA_CONTEXT context = random_.OneIn(2) ? EXTERNAL : AUTO_CONFIG;
    switch (random_.Below(8)) {
      case 0: {
        const auto object = AnyObject(id);
        store_->Set(object, context);
        if (!object->IsEmpty()) {
          model_[id] = {Divided(object, context), NextRevision(id)};
        }
        return;
      }
      case 1:
        return Update(AnyObject(id), context);
      case 2: {
        const Objects objects = AnyInstances();
        store_->SetInstances(objects, context);
        std::map<std::string, Row> replaced;
        for (const auto& object : objects) {
          if (!object->IsEmpty()) {
            replaced[IdOf(object)] = {Divided(object, context), NextRevision(IdOf(object))};
          }
        }
        model_ = replaced.empty() ? model_ : replaced;
        return;
      }
      case 3:
        store_->Delete(ModelId(id));
        model_.erase(id);
        return;
      case 4:
        return DeleteInstances(random_.OneIn(2) ? id : "");
      case 5:
      case 6:
        return WritePart(id, context);
      default:
        return ChangeTransaction();
    }
  }

  void Update(const ObjectHandle& object, USERDATA_CONTEXT context) {
    const auto given = Object(ModelId(IdOf(object)), Access::Of(*object).GetSerializedData());
    const Removals removals(Access::Of(*given).GetRoot(), schema_->GetSchemaPlace());
    try {
      store_->Update(object, context);
    } catch (const ValidationException&) {
      EXPECT_FALSE(removals.Empty());
      return;
    }
    if (!object->IsEmpty() || !removals.Empty()) {
      const ColumnValues changes = object->IsEmpty() ? ColumnValues() : Divided(object, context);
      Row& row = model_[IdOf(object)];
      const Part others = context == EXTERNAL ? &ColumnValues::automatic : &ColumnValues::user;
      for (const Part part : {&ColumnValues::user, &ColumnValues::automatic, &ColumnValues::vital,
                              &ColumnValues::cached}) {
        if (part != others && row.values.*part) {
          const auto left = Object(ModelId(IdOf(object)), *(row.values.*part));
          const bool taken = removals.TakeFrom(Access::Of(*left).GetRoot());
          // A part of nothing but the id goes as a whole.
          if (taken && Access::Of(*left).GetRoot().MemberCount() == 1) {
            (row.values.*part).reset();
          } else {
            row.values.*part = Access::Of(*left).GetSerializedData();
          }
        }
        if (changes.*part) {
          const auto laid = Merged(IdOf(object), {changes.*part, row.values.*part, {}, {}});
          row.values.*part = Access::Of(*laid).GetSerializedData();
        }
      }
      ++row.revision;
    }
  }

  void DeleteInstances(const std::string& id) {
    std::map<std::string, int> conditions;
    const auto filter = Filter(ModelId(id));
    for (const char* name : {"u1", "u2", "c1"}) {
      if (random_.OneIn(3)) {
        conditions[name] = static_cast<int>(random_.Below(3));
        filter->SetValue(name, conditions[name]);
      }
    }
    store_->DeleteInstances(filter);
    std::erase_if(model_, [&](const auto& entry) {
      const auto merged = Merged(entry.first, entry.second.values);
      return (id.empty() || id == entry.first) &&
             std::all_of(conditions.begin(), conditions.end(), [&](const auto& condition) {
               return merged &&
                      merged->GetPath("/" + condition.first) == std::to_string(condition.second);
             });
    });
  }

  // One part of one instance, or of all.
  void WritePart(const std::string& id, USERDATA_CONTEXT context) {
    const auto write = [&](const ObjectHandle& object, Part part) {
      if (!object->IsEmpty()) {
        model_[IdOf(object)].values.*part = Access::Of(*object).GetSerializedData();
        ++model_[IdOf(object)].revision;
      }
    };
    const Part users = context == EXTERNAL ? &ColumnValues::user : &ColumnValues::automatic;
    const unsigned long kind = random_.Below(3);
    const Part part = kind == 0 ? users : kind == 1 ? &ColumnValues::vital : &ColumnValues::cached;
    const Part data = kind == 0 ? &ColumnValues::user : part;
    if (random_.OneIn(2)) {
      const auto object = AnyObject(id, data);
      kind == 0   ? store_->SetUserData(object, context)
      : kind == 1 ? store_->SetVitalData(object)
                  : store_->SetCachedData(object);
      return write(object, part);
    }
    const Objects objects = AnyInstances(data);
    kind == 0   ? store_->SetUserDataInstances(objects, context)
    : kind == 1 ? store_->SetVitalDataInstances(objects)
                : store_->SetCachedDataInstances(objects);
    if (std::any_of(objects.begin(), objects.end(), [](auto& each) { return !each->IsEmpty(); })) {
      for (auto& [instance, row] : model_) {
        (row.values.*part).reset();
      }
    }
    for (const auto& object : objects) {
      write(object, part);
    }
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
  static std::string Line(const std::string& id, const ObjectHandle& object) {
    return id + TestSupport::Canonical(Access::Of(*object).GetRoot()) + "\n";
  }
  std::string Expected() const {
    std::string text;
    std::string revisions;
    for (const auto& [id, row] : model_) {
      const auto merged = Merged(id, row.values);
      text += merged ? Line(id, merged) : "";
      revisions += id + "#" + std::to_string(row.revision) + " ";
    }
    return text + revisions;
  }
  std::string Seen() {
    std::string text;
    for (const auto& object : store_->GetInstances(Filter(ModelId("")))) {
      text += Line(IdOf(object), object);
      EXPECT_EQ(Data(store_->Get(object->GetConfigStoreObjectId())), object->GetData());
    }
    for (const auto& [id, revision] : store_->GetInstancesRevision(ModelId(""))) {
      text += id + "#" + std::to_string(revision) + " ";
    }
    return text;
  }

  SchemaHandle schema_;
  TestSupport::Random random_;
  TestSupport::RandomObjects objects_{random_, 3};
  std::map<std::string, Row> model_;
  std::vector<std::map<std::string, Row>> saved_;
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
