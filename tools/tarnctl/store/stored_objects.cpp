#include "store/stored_objects.h"

#include "failure.h"
#include "json/pointer.h"

namespace tarnctl {

using TarnConfigStore::ConfigStoreObject;
using TarnConfigStore::ConfigStoreObjectId;

std::shared_ptr<TarnConfigStore::ConfigStore> OpenStore() {
  return TarnConfigStore::ConfigStore::GetStore(TarnConfigStore::sGlobalNamespace);
}

void RequireStore() {
  OpenStore();
}

void RaiseNotStored(const ConfigStoreObjectId& id) {
  throw ToolError(ExitCode::NOT_FOUND, "no object " + FormatObject(id) + " is stored");
}

void RaiseNoInstances(const ConfigStoreObjectId& type, const std::vector<std::string>& conditions) {
  throw ToolError(ExitCode::NOT_FOUND,
                  "no instance of " + FormatObject(type) +
                      (conditions.empty() ? " is stored" : " meets these conditions"));
}

namespace {

[[noreturn]] void RaiseNoMember(const ConfigStoreObject& object, const std::string& what) {
  throw ToolError(ExitCode::NOT_FOUND,
                  "the object " + FormatObject(object.GetConfigStoreObjectId()) + " has " + what);
}

}  // namespace

void PrintObject(const ConfigStoreObject& object, const MemberPath& member, ShownData shown,
                 const Output& output) {
  JsonMaker make;
  if (member.empty()) {
    output.Print(shown.Of(object, make));
    return;
  }
  const Json::Value data = make.Parse(object.GetData());
  const TypeSchema& type = shown.TypeOf(object);
  Json::Value value;
  if (!shown.Read(data, member, type, make, value)) {
    RaiseNoMember(object, "no member \"" + FormatMember(member) + "\"" + type.Suggest(member));
  }
  output.PrintMember(value);
}

void PrintPlace(const ConfigStoreObject& object, const MemberPath& place, ShownData shown,
                const Output& output) {
  JsonMaker make;
  const Json::Value data = make.Parse(object.GetData());
  const TypeSchema& type = shown.TypeOf(object);
  const ShownData::Way way = shown.WayTo(data, place, type);
  const Json::Value* value = Json::FindAt(data, way.path);
  if (value == nullptr || value->IsNull()) {
    if (const Json::Value* absent = type.Read(data, way.path)) {
      value = absent;
    }
  }
  if (value == nullptr) {
    RaiseNoMember(object, "nothing at " + PointerTo(place));
  }
  output.PrintMember(shown.At(way, *value, make));
}

void SayHowMany(std::size_t count, const ConfigStoreObjectId& type, const char* what) {
  Say(std::to_string(count) + (count == 1 ? " instance of " : " instances of ") +
      FormatObject(type) + " " + what);
}

}  // namespace tarnctl
