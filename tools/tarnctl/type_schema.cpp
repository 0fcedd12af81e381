#include "type_schema.h"

#include "tarnconfigstore/type_administration.h"

#include "failure.h"

namespace tarnctl {
namespace {

// Deeper chains of references and combinations than any sensible schema has; cycles end here.
constexpr int kMaximumDepth = 32;

const Json* FindObject(const Json& schema, const char* keyword) {
  const auto found = schema.find(keyword);
  return found != schema.end() && found->is_object() ? &*found : nullptr;
}

const Json* FindArray(const Json& schema, const char* keyword) {
  const auto found = schema.find(keyword);
  return found != schema.end() && found->is_array() ? &*found : nullptr;
}

// A null-valued member counts as absent.
const Json* FindMember(const Json& value, const std::string& name) {
  const auto found = value.find(name);
  return found != value.end() && !found->is_null() ? &*found : nullptr;
}

}  // namespace

// One of the schemas that may apply at a place. Conditions and dependencies declare members, but do
// not close the object to others.
struct TypeSchema::Part {
  const Json* schema;
  bool closes;
};

TypeSchema::TypeSchema(const TarnConfigStore::ConfigStoreObjectId& type)
    : typeFile_(Json::parse(TarnConfigStore::GetTypeFile(type.component, type.group, type.key))),
      root_(&typeFile_.at("schema")) {}

const Json& TypeSchema::Resolve(const Json& schema) const {
  const Json* resolved = &schema;
  for (int depth = 0; depth < kMaximumDepth && resolved->contains("$ref"); ++depth) {
    const auto& reference = resolved->at("$ref").get_ref<const std::string&>();
    resolved = &root_->at(Json::json_pointer(reference.substr(reference.find('#') + 1)));
  }
  return *resolved;
}

const Json* TypeSchema::FindProperty(const Json& schema, const std::string& name, int depth) const {
  const Json& resolved = Resolve(schema);
  if (const Json* properties = FindObject(resolved, "properties");
      properties != nullptr && properties->contains(name)) {
    return &properties->at(name);
  }
  if (const Json* parts = FindArray(resolved, "allOf"); parts != nullptr && depth < kMaximumDepth) {
    for (const Json& part : *parts) {
      if (const Json* property = FindProperty(part, name, depth + 1)) {
        return property;
      }
    }
  }
  // Which pattern a name matches is for the validator to say.
  return resolved.contains("patternProperties") ? nullptr
                                                : FindObject(resolved, "additionalProperties");
}

const Json& TypeSchema::Property(const Json& schema, const std::string& name) const {
  static const Json anything = Json::object();
  const Json* property = FindProperty(schema, name, 0);
  return property != nullptr ? *property : anything;
}

const Json* TypeSchema::Default(const Json& schema) const {
  for (const Json* place : {&schema, &Resolve(schema)}) {
    if (const auto found = place->find("default"); found != place->end()) {
      return &*found;
    }
  }
  return nullptr;
}

ValueKinds TypeSchema::Kinds(const Json& schema, int depth) const {
  const Json& resolved = Resolve(schema);
  ValueKinds kinds(ValueKinds::kAll);
  if (depth >= kMaximumDepth || !resolved.is_object()) {
    return kinds;
  }
  const auto unite = [](const Json& list, auto&& kindsOf) {
    ValueKinds united(0);
    for (const Json& element : list) {
      united = united | kindsOf(element);
    }
    return united;
  };
  if (const auto type = resolved.find("type"); type != resolved.end()) {
    const auto named = [](const Json& name) { return ValueKinds::Named(name.get<std::string>()); };
    kinds = kinds & (type->is_array() ? unite(*type, named) : named(*type));
  }
  if (const Json* values = FindArray(resolved, "enum")) {
    kinds = kinds & unite(*values, ValueKinds::Of);
  }
  if (const auto value = resolved.find("const"); value != resolved.end()) {
    kinds = kinds & ValueKinds::Of(*value);
  }
  const auto nested = [this, depth](const Json& part) { return Kinds(part, depth + 1); };
  for (const char* keyword : {"anyOf", "oneOf"}) {
    if (const Json* choices = FindArray(resolved, keyword)) {
      kinds = kinds & unite(*choices, nested);
    }
  }
  if (const Json* parts = FindArray(resolved, "allOf")) {
    for (const Json& part : *parts) {
      kinds = kinds & nested(part);
    }
  }
  return kinds;
}

void TypeSchema::CollectParts(const Json& schema, bool closes, int depth,
                              std::vector<Part>& parts) const {
  const Json& resolved = Resolve(schema);
  if (depth >= kMaximumDepth || !resolved.is_object()) {
    return;
  }
  parts.push_back({&resolved, closes});
  for (const char* keyword : {"allOf", "anyOf", "oneOf"}) {
    if (const Json* list = FindArray(resolved, keyword)) {
      for (const Json& part : *list) {
        CollectParts(part, closes, depth + 1, parts);
      }
    }
  }
  for (const char* keyword : {"if", "then", "else"}) {
    if (const Json* part = FindObject(resolved, keyword)) {
      CollectParts(*part, false, depth + 1, parts);
    }
  }
  if (const Json* dependencies = FindObject(resolved, "dependencies")) {
    for (const Json& part : *dependencies) {
      CollectParts(part, false, depth + 1, parts);
    }
  }
}

bool TypeSchema::MayHave(const Json& schema, const std::string& name) const {
  std::vector<Part> parts;
  CollectParts(schema, true, 0, parts);
  bool isClosed = false;
  for (const Part& part : parts) {
    const Json* properties = FindObject(*part.schema, "properties");
    const auto additional = part.schema->find("additionalProperties");
    const bool isSilent = additional == part.schema->end();
    if ((properties != nullptr && properties->contains(name)) ||
        part.schema->contains("patternProperties") || (!isSilent && *additional != false)) {
      return true;
    }
    isClosed = isClosed || (part.closes && (properties != nullptr || !isSilent));
  }
  return !isClosed;
}

const Json& TypeSchema::Items(const Json& schema) const {
  static const Json anything = Json::object();
  const Json* items = FindObject(Resolve(schema), "items");
  return items != nullptr ? *items : anything;
}

void TypeSchema::FindUndeclared(const Json& data, const Json& schema, MemberPath& place,
                                Findings& findings) const {
  if (!data.is_structured()) {
    return;
  }
  for (const auto& [name, value] : data.items()) {
    place.push_back(name);  // of an element: its index
    if (data.is_array()) {
      FindUndeclared(value, Items(schema), place, findings);
    } else if (MayHave(schema, name)) {
      FindUndeclared(value, Property(schema, name), place, findings);
    } else {
      findings.push_back({FormatPointer(place), "no such member"});
    }
    place.pop_back();
  }
}

Findings TypeSchema::FindUndeclared(const Json& data) const {
  MemberPath place;
  Findings findings;
  FindUndeclared(data, *root_, place, findings);
  return findings;
}

std::optional<std::string> TypeSchema::InstanceIdMember() const {
  if (const Json* properties = FindObject(*root_, "properties")) {
    for (const auto& [name, property] : properties->items()) {
      if (property.is_object() && property.value("instanceId", false)) {
        return name;
      }
    }
  }
  return std::nullopt;
}

ValueKinds TypeSchema::KindsOf(const MemberPath& path) const {
  const Json* schema = root_;
  MemberPath walked;
  for (const std::string& name : path) {
    if (const ValueKinds kinds = Kinds(*schema, 0); !kinds.Holds(ValueKinds::kObject)) {
      throw ToolError(ExitCode::INVALID,
                      "a path leads through objects only, and here it meets " + kinds.Describe(),
                      TarnConfigStore::CS_INCORRECT_TYPE, {{FormatPointer(walked), "no object"}});
    }
    walked.push_back(name);
    schema = &Property(*schema, name);
  }
  return Kinds(*schema, 0);
}

const Json* TypeSchema::Read(const Json& data, const MemberPath& path) const {
  const Json* schema = root_;
  const Json* value = &data;
  for (const std::string& name : path) {
    schema = &Property(*schema, name);
    const Json* member = value != nullptr ? FindMember(*value, name) : nullptr;
    value = member != nullptr ? member : Default(*schema);
  }
  return value;
}

}  // namespace tarnctl
