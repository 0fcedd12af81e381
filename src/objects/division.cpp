#include "objects/division.h"

#include "errors/raise.h"
#include "objects/config_store_object_impl.h"
#include "objects/schema_node.h"

#include <array>
#include <utility>

namespace TarnConfigStore {
namespace {

constexpr std::size_t kParts = 3;

// A value for each part that gets something; indexed by DataPart.
using Parts = std::array<std::optional<Json::Value>, kParts>;

std::size_t Index(DataPart part) {
  return static_cast<std::size_t>(part);
}

class Divider {
 public:
  explicit Divider(Json::Allocator& allocator) : allocator_(allocator) {}

  Parts Divide(const Json::Value& value, SchemaNode schema) {
    const DataPart tag = schema.Tag();
    if (tag != DataPart::USER || !(value.IsObject() || value.IsArray()) || !schema.IsMixed()) {
      return Whole(value, tag != DataPart::USER ? tag : schema.UniformPart());
    }
    return value.IsObject() ? DivideObject(value, schema) : DivideArray(value, schema.Items());
  }

 private:
  Parts Whole(const Json::Value& value, DataPart part) {
    Parts parts;
    parts[Index(part)].emplace(value, allocator_);
    return parts;
  }

  Parts DivideObject(const Json::Value& object, SchemaNode schema) {
    const std::string_view idMember = schema.InstanceIdMember();
    const Json::Value* id = idMember.empty() ? nullptr : Json::FindMember(object, idMember);
    Parts parts;
    for (const auto& member : object.GetObject()) {
      if (&member.value == id) {
        continue;
      }
      Parts ofMember = Divide(member.value, schema.Property(Json::Text(member.name)));
      for (std::size_t i = 0; i < kParts; ++i) {
        if (ofMember[i]) {
          AddMember(parts[i], member.name, std::move(*ofMember[i]), id, idMember);
        }
      }
    }
    // Nothing but the id, or nothing at all.
    if (!parts[0] && !parts[1] && !parts[2]) {
      return Whole(object, DataPart::USER);
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

  Parts DivideArray(const Json::Value& array, SchemaNode items) {
    const std::string_view idMember = items.InstanceIdMember();
    // Without ids the parts' elements could not be put together again.
    if (idMember.empty()) {
      return Whole(array, DataPart::USER);
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
    if (elements.empty()) {
      return Whole(array, DataPart::USER);
    }
    Parts parts;
    for (std::size_t i = 0; i < kParts; ++i) {
      if (wanted[i]) {
        parts[i].emplace(rapidjson::kArrayType);
        for (rapidjson::SizeType place = 0; place < array.Size(); ++place) {
          std::optional<Json::Value>& element = elements[place][i];
          parts[i]->PushBack(element ? std::move(*element) : IdAlone(array[place], idMember),
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

std::string Serialized(const Json::Value& value) {
  std::string text;
  if (!Json::Serialize(value, text)) {
    ThrowFailure("The data holds a text that is not UTF-8 or a number that is not finite");
  }
  return text;
}

}  // namespace

ColumnValues DivideValue(const Json::Value& value, const TarnSchemaStore::SchemaObject& schema,
                         const USERDATA_CONTEXT& context) {
  ColumnValues columns;
  std::optional<std::string>& untagged = context == EXTERNAL ? columns.user : columns.automatic;
  // Most types belong to one part as a whole, and nothing needs to be taken apart.
  switch (schema.GetConfigType()) {
    case TarnSchemaStore::CONFIG_USER:
      untagged = Serialized(value);
      return columns;
    case TarnSchemaStore::CONFIG_VITAL:
      columns.vital = Serialized(value);
      return columns;
    case TarnSchemaStore::CONFIG_CACHED:
      columns.cached = Serialized(value);
      return columns;
    default:
      break;
  }
  Json::Document scratch;
  const Parts parts =
      Divider(scratch.GetAllocator()).Divide(value, SchemaNode(schema.GetSchemaDocument()));
  const auto put = [&parts](DataPart part, std::optional<std::string>& column) {
    if (const std::optional<Json::Value>& of = parts[Index(part)]) {
      column = Serialized(*of);
    }
  };
  put(DataPart::USER, untagged);
  put(DataPart::VITAL, columns.vital);
  put(DataPart::CACHED, columns.cached);
  return columns;
}

ColumnMapEntry DivideObject(const ConfigStoreObject& object,
                            const TarnSchemaStore::SchemaObject& schema,
                            const USERDATA_CONTEXT& context) {
  const ConfigStoreObjectImpl& data = *object.GetImplementation();
  return {&data.GetConfigStoreObjectId(), DivideValue(data.GetRoot(), schema, context)};
}

}  // namespace TarnConfigStore
