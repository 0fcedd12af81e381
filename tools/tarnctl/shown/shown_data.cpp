#include "shown/shown_data.h"

#include "json/pointer.h"

#include <utility>

namespace tarnctl {
namespace {

using TarnConfigStore::ConfigStoreObject;
using TarnConfigStore::ConfigStoreObjectId;

}  // namespace

ShownData::ShownData(const Given& given) : reveals_(Reveals(given)), typeId_("", "", "") {}

const TypeSchema& ShownData::TypeOf(const ConfigStoreObject& object) {
  const ConfigStoreObjectId& id = object.GetConfigStoreObjectId();
  const ConfigStoreObjectId typeId(id.key, id.group, id.component);
  if (!type_ || typeId != typeId_) {
    type_.reset();
    type_.emplace(typeId);
    typeId_ = typeId;
  }
  return *type_;
}

Json::Value ShownData::Of(const ConfigStoreObject& object, JsonMaker& make) {
  Json::Value data = make.Parse(object.GetData());
  return reveals_ ? std::move(data) : At(WayTo(data, {}, TypeOf(object)), data, make);
}

ShownData::Way ShownData::WayTo(const Json::Value& data, const MemberPath& place,
                                const TypeSchema& type) const {
  Way way{{}, Json::Sight(type.Place())};
  const Json::Value* value = &data;
  for (const std::string& name : place) {
    if (way.end.IsSecret() && !reveals_) {
      break;
    }
    const bool isElement = value != nullptr && value->IsArray();
    way.end = isElement ? way.end.Element() : way.end.Member(name);
    way.path.push_back(name);
    value = value != nullptr ? Json::FindAt(*value, {name}) : nullptr;
  }
  return way;
}

bool ShownData::Read(const Json::Value& data, const MemberPath& place, const TypeSchema& type,
                     JsonMaker& make, Json::Value& shown) const {
  const Way way = WayTo(data, place, type);
  const Json::Value* const value = type.Read(data, way.path);
  if (value != nullptr) {
    shown = At(way, *value, make);
  }
  return value != nullptr;
}

Json::Value ShownData::At(const Way& way, const Json::Value& value, JsonMaker& make) const {
  Json::Value shown(value, make.GetAllocator());
  if (!reveals_) {
    std::string pointer;
    Json::MaskSecrets(shown, way.end.Place(), make.GetAllocator(), pointer, {});
  }
  return shown;
}

}  // namespace tarnctl
