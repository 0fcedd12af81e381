#include "shown/group_tree.h"

namespace tarnctl {
namespace {

// The last member, made where it has another name.
Json::Value& LastNamed(Json::Value& object, const std::string& name, rapidjson::Type type,
                       JsonMaker& make) {
  if (object.ObjectEmpty() || Json::Text((object.MemberEnd() - 1)->name) != name) {
    object.AddMember(make.Of(name), Json::Value(type), make.GetAllocator());
  }
  return (object.MemberEnd() - 1)->value;
}

}  // namespace

Json::Value MakeGroupTree(
    const std::vector<std::shared_ptr<TarnConfigStore::ConfigStoreObject>>& objects,
    bool isOfOneGroup, ShownData shown, JsonMaker& make) {
  Json::Value tree(rapidjson::kObjectType);
  for (const auto& object : objects) {
    const TarnConfigStore::ConfigStoreObjectId& id = object->GetConfigStoreObjectId();
    Json::Value& keys =
        isOfOneGroup ? tree : LastNamed(tree, id.group, rapidjson::kObjectType, make);
    Json::Value& place = LastNamed(keys, id.key, rapidjson::kNullType, make);
    Json::Value data = shown.Of(*object, make);
    if (place.IsNull() && id.instanceId.empty()) {
      place = data;
      continue;
    }
    // A type that has instances now may have had one object before.
    if (!place.IsArray()) {
      Json::Value list(rapidjson::kArrayType);
      if (!place.IsNull()) {
        list.PushBack(place, make.GetAllocator());
      }
      place = list;
    }
    place.PushBack(data, make.GetAllocator());
  }
  return tree;
}

}  // namespace tarnctl
