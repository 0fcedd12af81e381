#include "platform/generated_instance_id.h"

#include "platform/uuid.h"

#include <cstdlib>
#include <memory>
#include <stdexcept>

namespace {

struct Release {
  void operator()(char* text) const noexcept { std::free(text); }
};

bool LacksId(const Json::Value& element) {
  return element.IsObject() && Json::FindMember(element, Json::kGeneratedInstanceId) == nullptr;
}

void GiveId(Json::Value& element, Json::Allocator& allocator) {
  const std::unique_ptr<char, Release> id(UUID_CreateRandom());
  if (!id) {
    throw std::bad_alloc();
  }
  Json::AddMember(element, Json::Copy(Json::kGeneratedInstanceId, allocator),
                  Json::Copy(id.get(), allocator), allocator);
}

// Calls `visit(element)` for each element that wants an id and has none, until it answers false.
template <class AnyValue, class Visit>
bool ForEachLacking(Json::SchemaPlace schema, AnyValue& value, Visit visit) {
  if (!schema) {
    return true;
  }
  if (value.IsArray()) {
    const Json::SchemaPlace items = schema.Items();
    if (!items) {
      return true;
    }
    for (auto& element : value.GetArray()) {
      if ((items.GetsGeneratedId() && LacksId(element) && !visit(element)) ||
          !ForEachLacking(items, element, visit)) {
        return false;
      }
    }
  } else if (value.IsObject()) {
    for (auto& member : value.GetObject()) {
      if (Json::IsContainer(member.value) &&
          !ForEachLacking(schema.Property(Json::Text(member.name)), member.value, visit)) {
        return false;
      }
    }
  }
  return true;
}

}  // namespace

void PopulateGeneratedInstanceId(Json::SchemaPlace schema, Json::Value& value,
                                 Json::Allocator& allocator) {
  ForEachLacking(schema, value, [&](Json::Value& element) {
    GiveId(element, allocator);
    return true;
  });
}

bool LacksGeneratedInstanceId(Json::SchemaPlace schema, const Json::Value& value) {
  return !ForEachLacking(schema, value, [](const Json::Value& /*element*/) { return false; });
}

void PopulateGeneratedInstanceId(const Json::Value& schema, Json::Value& value,
                                 Json::Allocator& allocator) {
  PopulateGeneratedInstanceId(Json::TypeSchemaView(schema).Root(), value, allocator);
}
