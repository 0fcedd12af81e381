#include "json_schema/registration.h"

#include "json_schema/schema_registry.h"

namespace JsonValidator {

Registration::Registration(const Json::TypeSchemaView& view) : schema_(&view.Schema()) {
  SchemaRegistry::Instance().Add(view);
}

Registration::~Registration() {
  SchemaRegistry::Instance().Remove(*schema_);
}

}  // namespace JsonValidator
