#include "tarnconfigstore/documents.h"

#include "documents/config_document.h"
#include "errors/raise.h"
#include "objects/access.h"
#include "objects/document.h"
#include "objects/schema_lookup.h"
#include "validation/guards.h"

namespace TarnConfigStore {
namespace {

ObjectHandle MakeFrom(const ConfigStoreObjectId& id, const Json::Value& value,
                      const SchemaHandle& schema) {
  if (!value.IsObject()) {
    ThrowException<InvalidArgumentException>(CS_JSON_ASSERTION);
  }
  ConfigStoreObjectId named = id;
  if (schema->IsNonSingleton() && named.instanceId.empty()) {
    named.instanceId = GetInstanceIdFromValue(value, *schema);
  }
  auto object = std::make_shared<ConfigStoreObject>(named);
  ConfigStoreObjectImpl& data = Internal::Access::Of(*object);
  data.GetRoot().CopyFrom(value, data.GetAllocator());
  return object;
}

}  // namespace

std::shared_ptr<ConfigStoreObject> CreateObject(const ConfigStoreObjectId& id,
                                                std::string_view json) {
  const SchemaHandle schema = RequireSchema(id);
  const auto document = CreateDocumentFromString(json, Json::Origin::OUTSIDE);
  return MakeFrom(id, *document->GetJsonValuePtr(), schema);
}

std::vector<std::shared_ptr<ConfigStoreObject>> CreateObjects(std::string_view text) {
  ConfigDocument document = ReadConfigDocument(text, kLongestDocument);
  for (const NamedType& type : document.types) {
    CheckSchema(type.id, type.schema);
  }
  if (!document.findings.empty()) {
    ThrowException<ValidationException>(CS_SET_INVALID, document.findings);
  }
  std::vector<ObjectHandle> objects;
  for (const NamedType& type : document.types) {
    for (const NamedObject& object : type.objects) {
      if (const Json::Value* value = object.Of(Section::USER).value) {
        objects.push_back(MakeFrom(object.id, *value, type.schema));
      }
    }
  }
  return objects;
}

}  // namespace TarnConfigStore
