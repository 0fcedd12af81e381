// What a document says about itself, and its records of what is staged.

#include "platform/type_files.h"

#include "documents/document_reader.h"
#include "errors/raise.h"
#include "json/instance_ids.h"
#include "json/pointer.h"
#include "objects/schema_lookup.h"

#include <algorithm>
#include <initializer_list>
#include <utility>

namespace TarnConfigStore {
namespace {

constexpr const char* kNoText = "INCORRECT TYPE: expected string.";
constexpr const char* kNoObject = "INCORRECT TYPE: expected object.";
constexpr const char* kNoList = "INCORRECT TYPE: expected array.";
constexpr const char* kNoVersion = "is no version: numbers separated by dots";

// Calls `visit(element, pointer)` for each element of a list.
template <class Visit>
void ForEachElement(const Json::Value& list, const std::string& pointer, const Visit& visit) {
  int index = 0;
  for (const Json::Value& element : list.GetArray()) {
    visit(element, Json::PointerBelow(pointer, std::to_string(index++)));
  }
}

// The members of an object that may have no others, each with what is said where it is not right.
class Members {
 public:
  Members(const Json::Value& object, std::string pointer, std::vector<ErrorInfo>& findings)
      : object_(object), pointer_(std::move(pointer)), findings_(findings) {}

  void AllowOnly(std::initializer_list<std::string_view> names) {
    for (const auto& member : object_.GetObject()) {
      const std::string_view name = Json::Text(member.name);
      if (std::find(names.begin(), names.end(), name) == names.end()) {
        findings_.push_back({Json::PointerBelow(pointer_, name), "is not known here"});
      }
    }
  }

  const Json::Value* Find(const char* name) const { return Json::FindMember(object_, name); }

  std::optional<std::string> Text(const char* name) {
    const Json::Value* value = Find(name);
    if (value == nullptr) {
      return std::nullopt;
    }
    if (!value->IsString()) {
      Add(name, kNoText);
      return std::nullopt;
    }
    return std::string(Json::Text(*value));
  }

  const Json::Value* Object(const char* name) {
    const Json::Value* value = Find(name);
    if (value != nullptr && !value->IsObject()) {
      Add(name, kNoObject);
      return nullptr;
    }
    return value;
  }

  void Add(const char* name, std::string error) {
    findings_.push_back({Json::PointerBelow(pointer_, name), std::move(error)});
  }

 private:
  const Json::Value& object_;
  const std::string pointer_;
  std::vector<ErrorInfo>& findings_;
};

}  // namespace

void DocumentReader::ReadMetadata(const Json::Value& metadata) {
  Members members(metadata, Json::PointerBelow("", kMetadataName), document_.findings);
  members.AllowOnly({kPartsName, kRedactedName, kObjectsName});
  if (const Json::Value* parts = members.Find(kPartsName)) {
    ReadParts(*parts);
  }
  if (const Json::Value* redacted = members.Find(kRedactedName)) {
    ReadRedacted(*redacted);
  }
}

void DocumentReader::ReadParts(const Json::Value& parts) {
  const std::string pointer = Json::PointerBelow(Json::PointerBelow("", kMetadataName), kPartsName);
  document_.parts = {};
  if (!parts.IsArray()) {
    Add(pointer, kNoList);
    return;
  }
  ForEachElement(parts, pointer, [this](const Json::Value& part, const std::string& place) {
    const auto known = std::find_if(
        kPartNames.begin(), kPartNames.end(),
        [&](std::string_view name) { return part.IsString() && Json::Text(part) == name; });
    if (known != kPartNames.end()) {
      document_.parts[static_cast<std::size_t>(known - kPartNames.begin())] = true;
    } else if (part.IsString() && Json::Text(part) == kStagedName) {
      document_.speaksOfStaged = true;
    } else {
      Add(place,
          "is none of \"user\", \"automatic\", \"vital\", \"cached\", \"pending\" and \"staged\"");
    }
  });
  if (!document_.SpeaksOf(Section::USER)) {
    Add(pointer, "has to have \"user\"");
  }
}

void DocumentReader::ReadRedacted(const Json::Value& redacted) {
  const std::string pointer =
      Json::PointerBelow(Json::PointerBelow("", kMetadataName), kRedactedName);
  if (!redacted.IsArray()) {
    Add(pointer, kNoList);
    return;
  }
  ForEachElement(redacted, pointer, [this](const Json::Value& masked, const std::string& place) {
    if (masked.IsString()) {
      document_.redacted.emplace(Json::Text(masked));
    } else {
      Add(place, kNoText);
    }
  });
}

void DocumentReader::ReadInfo(const ConfigStoreObjectId& type, const Json::Value& value,
                              const std::string& pointer) {
  if (!value.IsArray()) {
    ReadOneInfo(type, value, pointer);
    return;
  }
  ForEachElement(value, pointer, [&](const Json::Value& element, const std::string& place) {
    ReadOneInfo(type, element, place);
  });
}

void DocumentReader::ReadOneInfo(const ConfigStoreObjectId& type, const Json::Value& value,
                                 const std::string& pointer) {
  if (!value.IsObject()) {
    Add(pointer, kNoObject);
    return;
  }
  Members members(value, pointer, document_.findings);
  members.AllowOnly({kInstanceName, kCreatedName, kRevisionName, kVersionName, kConfirmedName});
  const std::string instance = members.Text(kInstanceName).value_or("");
  const auto known = types_.find(type);
  NamedType* const named = known == types_.end() ? nullptr : &document_.types[known->second];
  const auto place = named == nullptr ? std::nullopt : named->places.Find(instance);
  if (!place) {
    Add(pointer, "is of no object of the document");
    return;
  }
  if (!informed_.insert({type.key, type.group, type.component, instance}).second) {
    Add(pointer, "is of an object that another one is of, too");
    return;
  }
  RowInfo& info = named->objects[*place].info;
  info.created = members.Text(kCreatedName);
  if (info.created && !IsTime(*info.created)) {
    members.Add(kCreatedName, "is no time of the form \"YYYY-MM-DD HH:MM:SS\"");
  }
  if (const Json::Value* revision = members.Find(kRevisionName)) {
    if (!revision->IsInt() || revision->GetInt() < 0) {
      members.Add(kRevisionName, "is no number of writes");
    } else {
      info.revision = revision->GetInt();
    }
  }
  info.version = members.Text(kVersionName);
  if (info.version && !TypeFiles::IsVersion(*info.version)) {
    members.Add(kVersionName, kNoVersion);
  }

  if (const Json::Value* confirmed = members.Find(kConfirmedName)) {
    if (!confirmed->IsBool()) {
      members.Add(kConfirmedName, "INCORRECT TYPE: expected boolean.");
    } else {
      info.confirmed = confirmed->GetBool();
    }
    if (!info.confirmed && document_.IsOfUserOnly()) {
      members.Add(kConfirmedName, "may be false in documents of all parts only");
    }
  }
}

void DocumentReader::ReadStaged(const ConfigStoreObjectId& type, const Json::Value& value,
                                const std::string& pointer) {
  if (!value.IsArray()) {
    Add(pointer, kNoList);
    return;
  }
  ForEachElement(value, pointer, [&](const Json::Value& element, const std::string& place) {
    ReadChange(type, element, place);
  });
}

void DocumentReader::ReadChange(const ConfigStoreObjectId& type, const Json::Value& value,
                                const std::string& pointer) {
  if (!value.IsObject()) {
    Add(pointer, kNoObject);
    return;
  }
  const std::size_t before = document_.findings.size();
  Members members(value, pointer, document_.findings);
  members.AllowOnly({kActionName, kInstanceName, kVersionName, kUserName, kVitalName, kCachedName});
  NamedChange change{
      {type.key, type.group, type.component, members.Text(kInstanceName).value_or("")}, pointer};
  change.version = members.Text(kVersionName).value_or("");
  bool hasData = false;
  for (std::size_t i = 0; i < kStagedParts.size(); ++i) {
    change.parts[i] = members.Object(kStagedParts[i].name);
    hasData = hasData || change.parts[i] != nullptr;
  }
  if (!change.version.empty() && !TypeFiles::IsVersion(change.version)) {
    members.Add(kVersionName, kNoVersion);
  }
  const std::string action = members.Text(kActionName).value_or("");
  const auto known = std::find_if(kActionNames.begin(), kActionNames.end(),
                                  [&action](std::string_view name) { return name == action; });
  if (known == kActionNames.end()) {
    members.Add(kActionName, R"(is none of "set", "delete" and "delete-instance")");
    return;
  }
  change.action = static_cast<NextBootAction>(known - kActionNames.begin());
  if (hasData != (change.action == NextBootAction::SET)) {
    members.Add(kActionName, hasData ? "has no use for data" : "needs data to set");
  }
  if (!change.id.instanceId.empty() && !Json::IsInstanceId(change.id.instanceId)) {
    members.Add(kInstanceName,
                "is no instance id: 1 to 255 bytes of UTF-8 without control characters");
  }
  if (!staged_.insert(change.id).second) {
    Add(pointer, "has an instance that another record has, too");
  }
  if (document_.findings.size() == before) {
    document_.staged.push_back(std::move(change));
  }
}

}  // namespace TarnConfigStore
