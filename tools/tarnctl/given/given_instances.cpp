#include "given/given_instances.h"

#include "given/given_masks.h"
#include "given/object_name.h"
#include "json/pointer.h"
#include "store/stored_objects.h"
#include "store/type_schema.h"

#include <unordered_map>
#include <utility>

namespace tarnctl {
namespace {

using TarnConfigStore::ConfigStoreObject;
using TarnConfigStore::ConfigStoreObjectId;

std::string PlaceOf(std::size_t element) {
  std::string pointer = "/";
  return pointer.append(std::to_string(element));
}

// The places of an object's findings are places in one element of the list.
std::string Below(const std::string& place, const std::string& field) {
  return field == "/" ? place : place + field;
}

class Elements {
 public:
  Elements(const ConfigStoreObjectId& type, const TypeSchema& schema)
      : type_(type), schema_(schema), idMember_(schema.InstanceIdMember()) {}

  void Add(const Json::Value& element) {
    const std::size_t number = count_++;
    if (!element.IsObject()) {
      faults_.push_back({PlaceOf(number), "no object"});
      return;
    }
    const Json::Value* id = Json::FindMember(element, idMember_);
    if (id == nullptr || !id->IsString()) {
      faults_.push_back(
          {PlaceOf(number), "the member \"" + idMember_ + "\" is to name the instance, as a text"});
      return;
    }
    const auto [earlier, isNew] = numbers_.emplace(Json::Text(*id), number);
    if (!isNew) {
      std::string place = PlaceOf(number);
      Json::AppendToken(place, idMember_);
      faults_.push_back({place, "the instance is listed before, at " + PlaceOf(earlier->second)});
      return;
    }
    for (auto& mask : FindMasks(element, schema_)) {
      faults_.push_back({Below(PlaceOf(number), mask.field), std::move(mask.error)});
    }
    ConfigStoreObjectId instance = type_;
    instance.instanceId = Json::Text(*id);
    std::string text;
    Json::Serialize(element, text);
    objects_.push_back(std::make_shared<ConfigStoreObject>(instance));
    objects_.back()->SetData(text.c_str());
  }

  void MoveTo(GivenInstances& given) {
    given.faults = given.source.WithLines(std::move(faults_));
    if (given.faults.empty()) {
      given.objects = std::move(objects_);
    }
  }

 private:
  const ConfigStoreObjectId& type_;
  const TypeSchema& schema_;
  const std::string idMember_;
  std::size_t count_ = 0;
  std::unordered_map<std::string, std::size_t> numbers_;
  std::vector<std::shared_ptr<ConfigStoreObject>> objects_;
  Findings faults_;
};

}  // namespace

GivenInstances ReadInstances(const ConfigStoreObjectId& type, const std::string& path) {
  OpenStore()->GetInstanceIds(type);  // which a type without instances has none of
  const TypeSchema schema(type);
  GivenInstances given;
  given.source =
      GivenData::Read(path, PlaceOfInstances(schema.Root()), YamlNull::OF_TYPE, Wanted::LIST);
  JsonMaker make;
  const Json::Value list = make.Parse(given.source.Text());
  Elements elements(type, schema);
  for (const Json::Value& element : list.GetArray()) {
    elements.Add(element);
  }
  elements.MoveTo(given);
  return given;
}

Findings FindFaults(const GivenInstances& given, TarnConfigStore::WriteKind kind) {
  Findings findings = given.faults;
  for (std::size_t i = 0; i < given.objects.size(); ++i) {
    Findings own = TarnConfigStore::FindingsOfWrite(given.objects[i], kind);
    for (auto& finding : own) {
      finding.field = Below(PlaceOf(i), finding.field);
    }
    own = given.source.WithLines(std::move(own));
    findings.insert(findings.end(), own.begin(), own.end());
  }
  return findings;
}

void WriteGivenInstances(const ConfigStoreObjectId& type, const std::string& path,
                         TarnConfigStore::WriteKind kind, const WriteInstances& write) {
  const GivenInstances given = ReadInstances(type, path);
  // The library tells of the first object that it refuses.
  if (Findings faults = FindFaults(given, kind); !faults.empty()) {
    throw ToolError(ExitCode::INVALID, "nothing was written: not all instances fit their type",
                    TarnConfigStore::CS_GENERIC, std::move(faults));
  }
  if (given.objects.empty()) {
    throw ToolError(ExitCode::INVALID,
                    "nothing was written: the list is empty (delete removes all instances)");
  }
  write(*OpenStore(), given.objects);
  SayHowMany(given.objects.size(), type, "set");
}

}  // namespace tarnctl
