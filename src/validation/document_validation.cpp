#include "validation/document_validation.h"

#include "platform/generated_instance_id.h"
#include "platform/schema_store.h"

#include "errors/platform_failures.h"
#include "objects/access.h"
#include "validation/object_validation.h"

namespace TarnConfigStore {
namespace {

bool Validate(Json::Value& value, Json::Allocator& allocator, const RuleSet& rules,
              std::vector<ErrorInfo>& errors) {
  if (!value.IsObject()) {
    errors.push_back({"/", "INCORRECT TYPE: expected object."});
    return false;
  }
  JsonDoc schema;
  WithStoreFailures([&] {
    TarnSchemaStore::GenerateSchemaDocument(value, TarnSchemaStore::SchemaStore::GetCache(),
                                            schema);
  });
  const std::size_t before = errors.size();
  ValidateValue(*schema.GetJsonValuePtr(), value, rules, errors, false);
  PopulateGeneratedInstanceId(*schema.GetJsonValuePtr(), value, allocator);
  return errors.size() == before;
}

}  // namespace

bool ValidateDocument(const ObjectHandle& object, std::vector<ErrorInfo>& errors) {
  StoreObjectImpl& data = Internal::Access::Of(*object);
  return Validate(data.GetRoot(), data.GetAllocator(), UserRules(), errors);
}

bool ValidateImportDocument(JsonDoc& document, std::vector<ErrorInfo>& errors) {
  return Validate(*document.GetJsonValuePtr(), document.GetAllocator(), SetRules(), errors);
}

}  // namespace TarnConfigStore
