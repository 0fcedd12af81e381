// Keeping the compiled forms of schemas that are used again and again.
#pragma once

#include "json/json.h"
#include "json/type_schema_view.h"

namespace JsonValidator {

/// Keeps the compiled form of a schema for the life of the registration: validations with the very
/// same schema value find it by its address. The view, and the schema, have to live as long, and as
/// long as any validation with it. Compiling waits for the first validation. A schema may be
/// registered several times, with the same view; one that is not is compiled by each validation.
class Registration {
 public:
  explicit Registration(const Json::TypeSchemaView& view);
  ~Registration();
  Registration(const Registration&) = delete;
  Registration& operator=(const Registration&) = delete;

 private:
  const Json::Value* schema_;
};

}  // namespace JsonValidator
