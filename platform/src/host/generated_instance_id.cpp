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
  if (!element.IsObject() || Json::FindMember(element, kGeneratedInstanceIdMember) != nullptr) {
    return;
  }
  const std::unique_ptr<char, Release> id(UUID_CreateRandom());
  if (!id) {
    throw std::bad_alloc();
  }
  element.AddMember(Json::Copy(kGeneratedInstanceIdMember, allocator),
                    Json::Copy(id.get(), allocator), allocator);
}

void Populate(const Json::Value& root, const Json::Value& at, Json::Value& value,
              Json::Allocator& allocator) {
  const Json::Value* schema = Json::FollowReference(root, at);
  if (schema == nullptr) {
    return;
  }
  if (value.IsArray()) {
    const Json::Value* items = Json::FindMember(*schema, "items");
    if (items == nullptr) {
      return;
    }
    const Json::Value* element = Json::FollowReference(root, *items);
    const bool generated = Json::IsTrue(*items, "generatedInstanceId") ||
                           (element != nullptr && Json::IsTrue(*element, "generatedInstanceId"));
    for (Json::Value& each : value.GetArray()) {
      if (generated) {
        GiveId(each, allocator);
      }
      Populate(root, *items, each, allocator);
    }
  } else if (value.IsObject()) {
    const Json::Value* properties = Json::FindMember(*schema, "properties");
    if (properties == nullptr) {
      return;
    }
    for (auto& member : value.GetObject()) {
      if (!member.value.IsObject() && !member.value.IsArray()) {
        continue;
      }
      if (const Json::Value* property = Json::FindMember(*properties, Json::Text(member.name))) {
        Populate(root, *property, member.value, allocator);
      }
    }
  }
}

}  // namespace

void PopulateGeneratedInstanceId(const Json::Value& schema, Json::Value& value,
                                 Json::Allocator& allocator) {
  Populate(schema, schema, value, allocator);
}
