#include "documents/document_reader.h"

#include "errors/raise.h"
#include "json/instance_ids.h"
#include "json/pointer.h"
#include "objects/schema_lookup.h"

#include <utility>

namespace TarnConfigStore {
namespace {

// The place of an object, which is there from now on.
std::size_t PlaceOf(NamedType& type, std::string_view instanceId, std::size_t likely = 0) {
  if (const auto known = type.places.Find(instanceId, likely)) {
    return *known;
  }
  type.objects.push_back({type.id, {}, {}});
  type.objects.back().id.instanceId = instanceId;
  type.places.Add(instanceId);
  return type.objects.size() - 1;
}

}  // namespace

DocumentReader::DocumentReader(ConfigDocument& document)
    : document_(document), schemas_(TarnSchemaStore::SchemaStore::GetCache()) {}

void DocumentReader::Add(std::string field, std::string error) {
  document_.findings.push_back({std::move(field), std::move(error)});
}

void DocumentReader::Read(const Json::Value& root) {
  if (!root.IsObject()) {
    Add("/", "INCORRECT TYPE: expected object.");
    return;
  }
  CheckFormat(root);
  CheckMembers(root);
  if (!document_.findings.empty()) {
    return;  // of another format everything may be otherwise
  }
  // What the document speaks of comes first: sections are held against it.
  if (const Json::Value* metadata = Json::FindMember(root, kMetadataName)) {
    ReadMetadata(*metadata);
  }
  ReadSections(root);
  const Json::Value* metadata = Json::FindMember(root, kMetadataName);
  const Json::Value* infos =
      metadata == nullptr ? nullptr : Json::FindMember(*metadata, kObjectsName);
  if (infos != nullptr) {
    ForEachType(*infos, std::string("/") + kMetadataName + "/" + kObjectsName,
                [this](const auto& type, const auto& value, const auto& pointer) {
                  ReadInfo(type, value, pointer);
                });
  }
}

void DocumentReader::CheckFormat(const Json::Value& root) {
  const Json::Value* format = Json::FindMember(root, kFormatName);
  if (format == nullptr) {
    Add("/", "has no \"format\"; a document of this form says \"format\": 1");
  } else if (!format->IsInt() || format->GetInt() != kDocumentFormat) {
    Add(Json::PointerBelow("", kFormatName), "is not 1, the only format that is read here");
  }
}

void DocumentReader::CheckMembers(const Json::Value& root) {
  for (const auto& member : root.GetObject()) {
    const std::string_view name = Json::Text(member.name);
    const bool isSection = name == kStagedName || FindSection(name);
    if (!isSection && name != kFormatName && name != kMetadataName) {
      Add(Json::PointerBelow("", name), "is no member of a document");
    } else if (name != kFormatName && !member.value.IsObject()) {
      Add(Json::PointerBelow("", name), "INCORRECT TYPE: expected object.");
    }
  }
  if (Json::FindMember(root, kSectionNames[0]) == nullptr) {
    Add("/", "has no \"config\"");
  }
}

void DocumentReader::ReadSections(const Json::Value& root) {
  for (std::size_t i = 0; i < kSections; ++i) {
    const Json::Value* section = Json::FindMember(root, kSectionNames[i]);
    if (section == nullptr) {
      continue;
    }
    if (!document_.parts[i]) {
      Add(Json::PointerBelow("", kSectionNames[i]),
          std::string("does not belong to the document: \"parts\" of "
                      "its metadata does not have \"") +
              kPartNames[i] + "\"");
      continue;
    }
    ForEachType(*section, Json::PointerBelow("", kSectionNames[i]),
                [&](const auto& type, const auto& value, const auto& pointer) {
                  ReadType(static_cast<Section>(i), type, value, pointer);
                });
  }
  if (const Json::Value* staged = Json::FindMember(root, kStagedName)) {
    if (!document_.speaksOfStaged) {
      Add(Json::PointerBelow("", kStagedName),
          "does not belong to the document: \"parts\" of its metadata does "
          "not have \"staged\"");
      return;
    }
    ForEachType(*staged, Json::PointerBelow("", kStagedName),
                [this](const auto& type, const auto& value, const auto& pointer) {
                  ReadStaged(type, value, pointer);
                });
  }
}

void DocumentReader::ForEachType(const Json::Value& section, const std::string& pointer,
                                 const TypeVisitor& visit) {
  const auto forEachMember = [this](const Json::Value& value, const std::string& place,
                                    const auto& receive) {
    if (!value.IsObject()) {
      Add(place, "INCORRECT TYPE: expected object.");
      return;
    }
    for (const auto& member : value.GetObject()) {
      const std::string_view name = Json::Text(member.name);
      receive(name, member.value, Json::PointerBelow(place, name));
    }
  };
  forEachMember(section, pointer, [&](auto component, const auto& groups, const auto& there) {
    forEachMember(groups, there, [&](auto group, const auto& keys, const auto& below) {
      forEachMember(keys, below, [&](auto key, const auto& value, const auto& place) {
        visit(ConfigStoreObjectId(std::string(key), std::string(group), std::string(component)),
              value, place);
      });
    });
  });
}

NamedType& DocumentReader::TypeOf(const ConfigStoreObjectId& id) {
  const auto [known, isNew] = types_.try_emplace(id, document_.types.size());
  if (isNew) {
    document_.types.push_back({id, FindSchema(schemas_, id), false, {}, {}});
  }
  return document_.types[known->second];
}

void DocumentReader::ReadType(Section section, const ConfigStoreObjectId& id,
                              const Json::Value& value, const std::string& pointer) {
  NamedType& type = TypeOf(id);
  type.inConfig = type.inConfig || section == Section::USER;
  if (!type.schema) {
    AppendErrorInfo(pointer, CS_SCHEMA_NOT_FOUND, document_.findings,
                    "/" + id.component + "/" + id.group + "/" + id.key);
    return;
  }
  if (!type.schema->IsNonSingleton()) {
    if (value.IsArray()) {
      Add(pointer, "expected an object: the type has no instances");
      return;
    }
    type.objects[PlaceOf(type, "")].parts[static_cast<std::size_t>(section)] = {&value, -1};
    return;
  }
  if (!value.IsArray()) {
    Add(pointer, "expected a list: the type has instances");
    return;
  }
  type.objects.reserve(value.Size());
  type.places.Reserve(value.Size());
  ReadInstances(section, type, value, pointer);
}

void DocumentReader::ReadInstances(Section section, NamedType& type, const Json::Value& list,
                                   const std::string& pointer) {
  const std::string_view idMember = type.schema->GetSchemaPlace().InstanceIdMember();
  std::int32_t index = -1;
  std::size_t next = 0;
  for (const Json::Value& element : list.GetArray()) {
    ++index;
    const auto place = [&] { return Json::PointerBelow(pointer, std::to_string(index)); };
    if (!element.IsObject()) {
      Add(place(), "INCORRECT TYPE: expected object.");
      continue;
    }
    const Json::Value* id = Json::FindMember(element, idMember);
    if (id == nullptr || !id->IsString()) {
      Add(Json::PointerBelow(place(), idMember), id == nullptr
                                                     ? "is missing: it holds the instance id"
                                                     : "INCORRECT TYPE: expected string.");
      continue;
    }
    if (!Json::IsInstanceId(Json::Text(*id))) {
      Add(Json::PointerBelow(place(), idMember),
          "is no instance id: 1 to 255 bytes of UTF-8 without control characters");
      continue;
    }
    const std::size_t found = PlaceOf(type, Json::Text(*id), next);
    next = found + 1;
    NamedObject::Part& part = type.objects[found].parts[static_cast<std::size_t>(section)];
    if (part.value != nullptr) {
      Add(Json::PointerBelow(place(), idMember), "is the id of element " +
                                                     std::to_string(part.index) +
                                                     ", too: " + Json::Quoted(Json::Text(*id)));
      continue;
    }
    part = {&element, index};
  }
}

}  // namespace TarnConfigStore
