#include "objects/division.h"

#include "platform/generated_instance_id.h"

#include "errors/raise.h"
#include "json/type_schema_view.h"
#include "objects/access.h"
#include "objects/config_store_object_impl.h"

#include <array>
#include <utility>

namespace TarnConfigStore {
namespace {

constexpr std::size_t kParts = 3;
constexpr std::array<Json::Kind, kParts> kKinds = {Json::Kind::USER, Json::Kind::VITAL,
                                                   Json::Kind::CACHED};

// A value for each part that gets something.
using Parts = std::array<std::optional<Json::Value>, kParts>;

std::size_t Index(Json::Kind part) {
  switch (part) {
    case Json::Kind::VITAL:
      return 1;
    case Json::Kind::CACHED:
      return 2;
    case Json::Kind::USER:
      break;
  }
  return 0;
}

class Divider {
 public:
  explicit Divider(Json::Allocator& allocator) : allocator_(allocator) {}

  Parts Divide(const Json::Value& value, Json::SchemaPlace place) {
    if (!Json::IsContainer(value) || !place.IsMixed()) {
      return Whole(value, place.WholeKind());
    }
    return value.IsObject() ? DivideObject(value, place) : DivideArray(value, place);
  }

 private:
  Parts Whole(const Json::Value& value, Json::Kind part) {
    Parts parts;
    parts[Index(part)].emplace(value, allocator_);
    return parts;
  }

  Parts DivideObject(const Json::Value& object, Json::SchemaPlace place) {
    const std::string_view idMember = place.InstanceIdMember();
    const Json::Value* id = idMember.empty() ? nullptr : Json::FindMember(object, idMember);
    Parts parts;
    for (const auto& member : object.GetObject()) {
      if (&member.value == id) {
        continue;
      }
      Parts ofMember = Divide(member.value, place.Property(Json::Text(member.name)));
      for (std::size_t i = 0; i < kParts; ++i) {
        if (ofMember[i]) {
          AddMember(parts[i], member.name, std::move(*ofMember[i]), id, idMember);
        }
      }
    }
    // Nothing but the id, or nothing at all.
    if (!parts[0] && !parts[1] && !parts[2]) {
      return Whole(object, place.OwnKind());
    }
    return parts;
  }

  // Each part starts with the instance id, so that its elements can be told apart wherever they end
  // up.
  void AddMember(std::optional<Json::Value>& part, const Json::Value& name, Json::Value&& value,
                 const Json::Value* id, std::string_view idMember) {
    if (!part) {
      part.emplace(rapidjson::kObjectType);
      if (id != nullptr) {
        part->AddMember(Json::Copy(idMember, allocator_), Json::Value(*id, allocator_), allocator_);
      }
    }
    part->AddMember(Json::Value(name, allocator_), std::move(value), allocator_);
  }

  Parts DivideArray(const Json::Value& array, Json::SchemaPlace place) {
    const Json::SchemaPlace items = place.Items();
    const std::string_view idMember = items.InstanceIdMember();
    // Without ids the parts' elements could not be put together again.
    if (idMember.empty() || array.Empty()) {
      return Whole(array, place.OwnKind());
    }
    std::vector<Parts> elements;
    elements.reserve(array.Size());
    std::array<bool, kParts> wanted{};
    for (const Json::Value& element : array.GetArray()) {
      elements.push_back(Divide(element, items));
      for (std::size_t i = 0; i < kParts; ++i) {
        wanted[i] = wanted[i] || elements.back()[i];
      }
    }
    Parts parts;
    for (std::size_t i = 0; i < kParts; ++i) {
      if (wanted[i]) {
        parts[i].emplace(rapidjson::kArrayType);
        for (rapidjson::SizeType at = 0; at < array.Size(); ++at) {
          std::optional<Json::Value>& element = elements[at][i];
          parts[i]->PushBack(element ? std::move(*element) : IdAlone(array[at], idMember),
                             allocator_);
        }
      }
    }
    return parts;
  }

  Json::Value IdAlone(const Json::Value& element, std::string_view idMember) {
    Json::Value alone(rapidjson::kObjectType);
    if (const Json::Value* id = Json::FindMember(element, idMember)) {
      alone.AddMember(Json::Copy(idMember, allocator_), Json::Value(*id, allocator_), allocator_);
    }
    return alone;
  }

  Json::Allocator& allocator_;
};

std::optional<std::string>& ColumnOf(ColumnValues& columns, Json::Kind part,
                                     const USERDATA_CONTEXT& context) {
  switch (part) {
    case Json::Kind::VITAL:
      return columns.vital;
    case Json::Kind::CACHED:
      return columns.cached;
    case Json::Kind::USER:
      break;
  }
  return context == EXTERNAL ? columns.user : columns.automatic;
}

std::string Serialized(const Json::Value& value) {
  std::string text;
  if (!Json::Serialize(value, text)) {
    ThrowFailure("The data holds a text that is not UTF-8 or a number that is not finite");
  }
  return text;
}

}  // namespace

void GiveGeneratedIds(const ConfigStoreObject& object,
                      const TarnSchemaStore::SchemaObject& schema) {
  const Json::SchemaPlace place = schema.GetSchemaPlace();
  if (place.HoldsGeneratedIds()) {
    ConfigStoreObjectImpl& data = Internal::Access::Of(object);
    PopulateGeneratedInstanceId(place, data.GetRoot(), data.GetAllocator());
  }
}

DividedValue::DividedValue(const Json::Value& value, Json::SchemaPlace type) {
  // Most types belong to one part as a whole, and nothing needs to be taken apart.
  if (!type.IsMixed()) {
    parts_[Index(type.WholeKind())] = &value;
    return;
  }
  taken_ = Divider(memory_).Divide(value, type);
  for (std::size_t i = 0; i < kParts; ++i) {
    parts_[i] = taken_[i] ? &*taken_[i] : nullptr;
  }
}

const Json::Value* DividedValue::Of(Json::Kind part) const {
  return parts_[Index(part)];
}

unsigned DividedValue::Parts() const {
  unsigned parts = 0;
  for (const Json::Kind kind : kKinds) {
    parts |= Of(kind) == nullptr ? 0U : static_cast<unsigned>(kind);
  }
  return parts;
}

ColumnValues DivideValue(const Json::Value& value, const TarnSchemaStore::SchemaObject& schema,
                         const USERDATA_CONTEXT& context) {
  const DividedValue divided(value, schema.GetSchemaPlace());
  ColumnValues columns;
  for (const Json::Kind part : kKinds) {
    if (const Json::Value* of = divided.Of(part)) {
      ColumnOf(columns, part, context) = Serialized(*of);
    }
  }
  return columns;
}

std::optional<ColumnValues> PlaceText(std::string text, const TarnSchemaStore::SchemaObject& schema,
                                      const USERDATA_CONTEXT& context) {
  const Json::SchemaPlace root = schema.GetSchemaPlace();
  if (root.IsMixed() || root.HoldsGeneratedIds()) {
    return std::nullopt;
  }
  ColumnValues columns;
  ColumnOf(columns, root.WholeKind(), context) = std::move(text);
  return columns;
}

ColumnMapEntry DivideObject(const ConfigStoreObject& object,
                            const TarnSchemaStore::SchemaObject& schema,
                            const USERDATA_CONTEXT& context) {
  const ConfigStoreObjectImpl& data = Internal::Access::Of(object);
  return {&data.GetConfigStoreObjectId(), DivideValue(data.GetRoot(), schema, context)};
}

}  // namespace TarnConfigStore
