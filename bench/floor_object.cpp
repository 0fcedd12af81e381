#include "floor_object.h"

#include "floor_json.h"

#include <cstring>
#include <stdexcept>
#include <utility>

namespace Benchmarks {
namespace {

constexpr std::size_t kChunkOfObject = 512;
// What RapidJSON makes room for when an object gets its first member.
constexpr std::size_t kMembersOfMerged = 16;

Json::SystemAllocator& SystemOfObjects() {
  static Json::SystemAllocator allocator;
  return allocator;
}

// Takes over a text, which is then the copy's.
void Move(std::string_view& text, char*& to) {
  std::memcpy(to, text.data(), text.size());
  text = {std::exchange(to, to + text.size()), text.size()};
}

}  // namespace

FloorObject::FloorObject(char* values, std::size_t valuesSize)
    : pool_(values, valuesSize, kChunkOfObject, &SystemOfObjects()) {}

std::unique_ptr<FloorObject> FloorObject::Make(const FloorMetadata& metadata,
                                               std::span<const std::string_view> layers) {
  std::size_t values = 0;
  std::size_t texts = metadata.instanceId.size() + metadata.version.size() +
                      metadata.creationTime.size() + metadata.modifiedTime.size();
  std::size_t filled = 0;
  for (const std::string_view layer : layers) {
    if (layer.data() != nullptr) {
      ++filled;
      values += RoomForValues(layer);
      texts += RoomForText(layer);
    }
  }
  values += filled > 1 ? kMembersOfMerged * sizeof(Json::Value::Member) : 0;
  // Values first, since texts need no alignment.
  char* const memory = static_cast<char*>(::operator new(sizeof(FloorObject) + values + texts));
  char* at = memory + sizeof(FloorObject) + values;
  std::unique_ptr<FloorObject> object(new (memory)
                                          FloorObject(memory + sizeof(FloorObject), values));
  for (const std::string_view layer : layers) {
    if (layer.data() != nullptr) {
      object->Lay(ParseInto(layer, at, object->pool_));
      at += RoomForText(layer);
    }
  }
  object->metadata_ = metadata;
  Move(object->metadata_.instanceId, at);
  Move(object->metadata_.version, at);
  Move(object->metadata_.creationTime, at);
  Move(object->metadata_.modifiedTime, at);
  return object;
}

void FloorObject::operator delete(FloorObject* object, std::destroying_delete_t /*how*/) {
  object->~FloorObject();
  ::operator delete(static_cast<void*>(object));
}

void FloorObject::Lay(Json::Value layer) {
  if (!layer.IsObject()) {
    throw std::runtime_error("floor: a row that is not a JSON object");
  }
  if (data_.IsNull()) {
    data_ = std::move(layer);
    return;
  }
  if (!isMerged_) {
    // A parsed object has room for its own members only, and would grow with every other one.
    Json::Value roomy(rapidjson::kObjectType);
    for (auto& member : data_.GetObject()) {
      roomy.AddMember(std::move(member.name), std::move(member.value), pool_);
    }
    data_ = std::move(roomy);
    isMerged_ = true;
  }
  for (auto& member : layer.GetObject()) {
    if (member.value.IsNull()) {
      continue;
    }
    const auto existing = data_.FindMember(member.name);
    if (existing != data_.MemberEnd()) {
      existing->value = std::move(member.value);
    } else {
      data_.AddMember(std::move(member.name), std::move(member.value), pool_);
    }
  }
}

}  // namespace Benchmarks
