#include "platform/generated_instance_id.h"

#include "platform/uuid.h"

#include <cstdlib>
#include <memory>
#include <stdexcept>

namespace {

struct Release {
  void operator()(char* text) const noexcept { std::free(text); }
};

void GiveId(Json::Value& element, Json::Allocator& allocator) {
  if (!element.IsObject() || Json::FindMember(element, Json::kGeneratedInstanceId) != nullptr) {
    return;
  }
  const std::unique_ptr<char, Release> id(UUID_CreateRandom());
  if (!id) {
    throw std::bad_alloc();
  }
  element.AddMember(Json::Copy(Json::kGeneratedInstanceId, allocator),
                    Json::Copy(id.get(), allocator), allocator);
}

}  // namespace

void PopulateGeneratedInstanceId(Json::SchemaPlace schema, Json::Value& value,
                                 Json::Allocator& allocator) {
  if (value.IsArray()) {
    const Json::SchemaPlace items = schema.Items();
    if (!items) {
      return;
    }
    for (Json::Value& element : value.GetArray()) {
      if (items.GetsGeneratedId()) {
        GiveId(element, allocator);
      }
      PopulateGeneratedInstanceId(items, element, allocator);
    }
  } else if (value.IsObject()) {
    for (auto& member : value.GetObject()) {
      if (!member.value.IsObject() && !member.value.IsArray()) {
        continue;
      }
      if (const Json::SchemaPlace property = schema.Property(Json::Text(member.name))) {
        PopulateGeneratedInstanceId(property, member.value, allocator);
      }
    }
  }
}

void PopulateGeneratedInstanceId(const Json::Value& schema, Json::Value& value,
                                 Json::Allocator& allocator) {
  PopulateGeneratedInstanceId(Json::TypeSchemaView(schema).Root(), value, allocator);
}
