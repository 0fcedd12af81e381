#include "stored_objects.h"

#include "failure.h"
#include "json/pointer.h"
#include "type_schema.h"

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

void PrintObject(const ConfigStoreObject& object, const MemberPath& member, const Output& output) {
  JsonMaker make;
  const Json::Value data = make.Parse(object.GetData());
  if (member.empty()) {
    output.Print(data);
    return;
  }
  const TypeSchema schema(object.GetConfigStoreObjectId());
  const Json::Value* value = schema.Read(data, member);
  if (value == nullptr) {
    RaiseNoMember(object, "no member \"" + FormatMember(member) + "\"" + schema.Suggest(member));
  }
  output.PrintMember(*value);
}

void PrintPlace(const ConfigStoreObject& object, const MemberPath& place, const Output& output) {
  JsonMaker make;
  const Json::Value data = make.Parse(object.GetData());
  const Json::Value* value = Json::FindAt(data, place);
  if (value == nullptr || value->IsNull()) {
    const TypeSchema schema(object.GetConfigStoreObjectId());
    if (const Json::Value* absent = schema.Read(data, place)) {
      output.PrintMember(*absent);
      return;
    }
  }
  if (value == nullptr) {
    std::string pointer;
    for (const std::string& name : place) {
      Json::AppendToken(pointer, name);
    }
    RaiseNoMember(object, "nothing at " + pointer);
  }
  output.PrintMember(*value);
}

void PrintObjects(const std::vector<std::shared_ptr<ConfigStoreObject>>& objects,
                  const Output& output) {
  JsonMaker make;
  output.Print(
      make.List(objects, [&](const auto& object) { return make.Parse(object->GetData()); }));
}

void SayHowMany(std::size_t count, const ConfigStoreObjectId& type, const char* what) {
  Say(std::to_string(count) + (count == 1 ? " instance of " : " instances of ") +
      FormatObject(type) + " " + what);
}

}  // namespace tarnctl
