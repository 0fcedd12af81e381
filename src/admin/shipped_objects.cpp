#include "admin/shipped_objects.h"

#include "platform/generated_instance_id.h"

#include "json/number_kinds.h"

namespace TarnConfigStore {

std::vector<DefaultRow> DivideShippedObjects(const TypeFiles::TypeFile& file) {
  std::vector<DefaultRow> rows;
  if (file.shipped.empty()) {
    return rows;
  }
  const auto type = TypeFiles::Load(file.type);
  rows.reserve(file.shipped.size());
  for (const TypeFiles::ShippedObject& object : file.shipped) {
    JsonDoc data;
    Json::Value& value = *data.GetJsonValuePtr();
    value.CopyFrom(*object.value, data.GetAllocator());
    Json::SettleNumbers(value, type->GetSchemaPlace());
    // The parts of such elements are put together again by these.
    PopulateGeneratedInstanceId(type->GetSchemaPlace(), value, data.GetAllocator());
    rows.push_back({object.instance, DivideValue(value, *type, EXTERNAL)});
  }
  return rows;
}

}  // namespace TarnConfigStore
