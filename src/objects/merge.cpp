#include "objects/merge.h"

#include "json/text_index.h"
#include "objects/access.h"
#include "objects/config_store_object_impl.h"

#include <algorithm>
#include <optional>
#include <unordered_map>

namespace TarnConfigStore {
namespace {

// The members of an object that others are laid over.
class Members {
 public:
  /// \param lookups  how many members will be looked up
  Members(Json::Value& object, rapidjson::SizeType lookups) : object_(object) {
    if (std::min(object.MemberCount(), lookups) < Json::kWorthAnIndex) {
      return;
    }
    index_.emplace();
    index_->Reserve(object.MemberCount() + lookups);
    for (rapidjson::SizeType i = 0; i < object.MemberCount(); ++i) {
      index_->Add(Json::Text(At(i).name), i);
    }
  }

  Json::Value* Find(std::string_view name) {
    if (!index_) {
      return Json::FindMember(object_, name);
    }
    const rapidjson::SizeType found = index_->Find(
        name, [&](rapidjson::SizeType position) { return Json::Text(At(position).name) == name; });
    return found == Json::TextIndex::kNowhere ? nullptr : &At(found).value;
  }

  void Add(Json::Value&& name, Json::Value&& value, Json::Allocator& allocator) {
    Json::AddMember(object_, std::move(name), std::move(value), allocator);
    if (index_) {
      const rapidjson::SizeType last = object_.MemberCount() - 1;
      index_->Add(Json::Text(At(last).name), last);
    }
  }

 private:
  Json::Value::Member& At(rapidjson::SizeType position) {
    return *(object_.MemberBegin() + static_cast<std::ptrdiff_t>(position));
  }

  Json::Value& object_;
  std::optional<Json::TextIndex> index_;
};

// A source that stays is copied; one whose memory is the target's is moved.
Json::Value Take(const Json::Value& value, Json::Allocator& allocator) {
  return {value, allocator};
}
Json::Value Take(Json::Value& value, Json::Allocator& /*allocator*/) {
  return std::move(value);
}
void Replace(Json::Value& target, const Json::Value& source, Json::Allocator& allocator) {
  Json::CopyInto(target, source, allocator);
}
void Replace(Json::Value& target, Json::Value& source, Json::Allocator& /*allocator*/) {
  target = std::move(source);
}

template <class Source>
void Merge(Source& source, Json::Value& target, Json::SchemaPlace schema,
           Json::Allocator& allocator);

template <class Source>
void MergeMembers(Source& source, Json::Value& target, Json::SchemaPlace schema,
                  Json::Allocator& allocator) {
  Members members(target, source.MemberCount());
  for (auto& member : source.GetObject()) {
    const std::string_view name = Json::Text(member.name);
    if (Json::Value* existing = members.Find(name)) {
      if (member.value.IsNull()) {
        continue;  // says nothing beside a value
      }
      Merge(member.value, *existing, schema.Property(name), allocator);
    } else {
      members.Add(Take(member.name, allocator), Take(member.value, allocator), allocator);
    }
  }
}

// Elements without an id cannot be told apart, so they are always new ones.
template <class Source>
void MergeInstances(Source& source, Json::Value& target, Json::SchemaPlace items,
                    std::string_view idMember, Json::Allocator& allocator) {
  std::unordered_map<std::string, rapidjson::SizeType> places;
  places.reserve(target.Size() + source.Size());
  for (rapidjson::SizeType i = 0; i < target.Size(); ++i) {
    if (const auto id = Json::InstanceIdOf(target[i], idMember)) {
      places.emplace(*id, i);
    }
  }
  for (auto& element : source.GetArray()) {
    const auto id = Json::InstanceIdOf(element, idMember);
    const auto place = id ? places.find(std::string(*id)) : places.end();
    if (place != places.end()) {
      Merge(element, target[place->second], items, allocator);
      continue;
    }
    if (id) {
      places.emplace(*id, target.Size());
    }
    target.PushBack(Take(element, allocator), allocator);
  }
}

template <class Source>
void Merge(Source& source, Json::Value& target, Json::SchemaPlace schema,
           Json::Allocator& allocator) {
  if (source.IsObject() && target.IsObject()) {
    MergeMembers(source, target, schema, allocator);
    return;
  }
  if (source.IsArray() && target.IsArray()) {
    const Json::SchemaPlace items = schema.Items();
    const std::string_view idMember = items.InstanceIdMember();
    if (!idMember.empty()) {
      MergeInstances(source, target, items, idMember, allocator);
      return;
    }
  }
  Replace(target, source, allocator);
}

}  // namespace

void MergeValue(const Json::Value& source, Json::Value& target, Json::SchemaPlace schema,
                Json::Allocator& allocator) {
  if (&source != &target) {
    Merge(source, target, schema, allocator);
  }
}

void MergeValue(Json::Value&& source, Json::Value& target, Json::SchemaPlace schema,
                Json::Allocator& allocator) {
  Merge(source, target, schema, allocator);
}

std::shared_ptr<ConfigStoreObject> UpdateConfigInternal(
    const std::shared_ptr<ConfigStoreObject>& source,
    const std::shared_ptr<ConfigStoreObject>& target, Json::SchemaPlace schema) {
  if (!source || !target) {
    return target ? target : source;
  }
  ConfigStoreObjectImpl& onto = Internal::Access::Of(*target);
  MergeValue(Internal::Access::Of(*source).GetRoot(), onto.GetRoot(), schema, onto.GetAllocator());
  return target;
}

std::shared_ptr<ConfigStoreObject> MergeConfig(const std::shared_ptr<ConfigStoreObject>& base,
                                               const std::shared_ptr<ConfigStoreObject>& a,
                                               const std::shared_ptr<ConfigStoreObject>& b,
                                               const std::shared_ptr<ConfigStoreObject>& c,
                                               Json::SchemaPlace schema) {
  return UpdateConfigInternal(
      c, UpdateConfigInternal(b, UpdateConfigInternal(a, base, schema), schema), schema);
}

}  // namespace TarnConfigStore
