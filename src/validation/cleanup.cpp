#include "validation/cleanup.h"

#include "platform/logger.h"

#include "json/type_schema_view.h"
#include "json/utf8.h"
#include "objects/access.h"

#include <string>

namespace TarnConfigStore {
namespace {

// An id that names another instance is not all that the object says; one that is null counts as
// absent.
bool HoldsOwnIdAlone(const Json::Value& object, Json::SchemaPlace place, const std::string& id) {
  if (object.ObjectEmpty() || !place.HoldsNothingBesideId(object)) {
    return false;
  }
  const auto given = Json::InstanceIdOf(object, place.InstanceIdMember());
  return given ? id.empty() || *given == id : object.MemberBegin()->value.IsNull();
}

bool NamesNothing(const Json::Value& element) {
  return element.IsObject() && (element.ObjectEmpty() || (element.MemberCount() == 1 &&
                                                          Json::Text(element.MemberBegin()->name) ==
                                                              Json::kGeneratedInstanceId));
}

class Cleaner {
 public:
  Cleaner(Writes writes, Json::Allocator& allocator) : writes_(writes), allocator_(allocator) {}

  void CleanMembers(Json::Value& object, Json::SchemaPlace schema) {
    for (auto member = object.MemberBegin(); member != object.MemberEnd();) {
      const std::string_view name = Json::Text(member->name);
      const Json::SchemaPlace property =
          Json::IsContainer(member->value) ? schema.Property(name) : Json::SchemaPlace();
      if (!property || property.OwnKind() != Json::Kind::USER) {
        ++member;
        continue;
      }
      Clean(member->value, property);
      if (Json::IsEmptyContainer(member->value) && !schema.CanRequire(name) &&
          !property.HoldsDefaults() && !TakesAnothersPlace(member->value, property)) {
        CSLogger::Log(CSLogger::kOutcome, "Erasing empty object prop %s",
                      Json::Utf8::Escaped(name).c_str());
        member = object.EraseMember(member);
      } else {
        ++member;
      }
    }
  }

 private:
  void Clean(Json::Value& value, Json::SchemaPlace schema) {
    if (value.IsObject()) {
      CleanMembers(value, schema);
    } else if (value.IsArray() && schema.Items().OwnKind() == Json::Kind::USER) {
      CleanElements(value, schema.Items());
    }
  }

  void CleanElements(Json::Value& array, Json::SchemaPlace items) {
    const bool holdsInstances = !items.InstanceIdMember().empty();
    auto kept = array.Begin();
    for (auto element = array.Begin(); element != array.End(); ++element) {
      if (holdsInstances && NamesNothing(*element)) {
        CSLogger::Log(CSLogger::kOutcome, "Erasing empty array element %zu",
                      static_cast<std::size_t>(element - array.Begin()));
        continue;
      }
      CleanElement(*element, items);
      if (kept != element) {
        *kept = *element;
      }
      ++kept;
    }
    if (kept != array.End()) {
      array.Erase(kept, array.End());
    }
  }

  // An element that was given something is not made one that names nothing.
  void CleanElement(Json::Value& element, Json::SchemaPlace items) {
    if (!HoldsEmptyContent(element)) {
      return;
    }
    Json::Value given(element, allocator_);
    Clean(element, items);
    if (NamesNothing(element)) {
      element = given;
    }
  }

  // Instances of two parts are put together; of other lists the one part's replaces the other's.
  bool TakesAnothersPlace(const Json::Value& value, Json::SchemaPlace place) const {
    return writes_ == Writes::ONE_PART && value.IsArray() &&
           place.Items().InstanceIdMember().empty();
  }

  Writes writes_;
  Json::Allocator& allocator_;
};

}  // namespace

// Most objects hold nothing empty; looking for it asks nothing of the schema.
bool HoldsEmptyContent(const Json::Value& value) {
  if (value.IsObject()) {
    for (const auto& member : value.GetObject()) {
      if (Json::IsContainer(member.value) &&
          (Json::IsEmptyContainer(member.value) || HoldsEmptyContent(member.value))) {
        return true;
      }
    }
  } else if (value.IsArray()) {
    for (const Json::Value& element : value.GetArray()) {
      if (Json::IsContainer(element) && (Json::IsEmptyContainer(element) || NamesNothing(element) ||
                                         HoldsEmptyContent(element))) {
        return true;
      }
    }
  }
  return false;
}

void CleanupObject(const ObjectHandle& object, const SchemaHandle& schema, Writes writes) {
  switch (schema->GetConfigType()) {
    case TarnSchemaStore::CONFIG_VITAL:
    case TarnSchemaStore::CONFIG_CACHED:
    case TarnSchemaStore::CONFIG_VITAL_AND_CACHED:
      return;
    default:
      break;
  }
  ConfigStoreObjectImpl& data = Internal::Access::Of(*object);
  Json::Value& root = data.GetRoot();
  if (root.IsObject()) {
    const Json::SchemaPlace node = schema->GetSchemaPlace();
    if (HoldsEmptyContent(root)) {
      Cleaner(writes, data.GetAllocator()).CleanMembers(root, node);
    }
    if (HoldsOwnIdAlone(root, node, object->GetConfigStoreObjectId().instanceId)) {
      CSLogger::Log(CSLogger::kOutcome, "Erasing instance id %s, nothing else is left",
                    std::string(node.InstanceIdMember()).c_str());
      root.RemoveAllMembers();
    }
  }
}

}  // namespace TarnConfigStore
