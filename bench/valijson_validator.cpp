#include "valijson_validator.h"

// The adapter brings an assertion of its own and minds any other; RapidJSON is included already,
// with ours.
#define VALIJSON_USE_EXCEPTIONS 1
#pragma push_macro("RAPIDJSON_ASSERT")
#undef RAPIDJSON_ASSERT
#include <valijson/adapters/rapidjson_adapter.hpp>
#pragma pop_macro("RAPIDJSON_ASSERT")

#include <valijson/schema.hpp>
#include <valijson/schema_parser.hpp>
#include <valijson/validation_results.hpp>
#include <valijson/validator.hpp>

namespace Benchmarks {

using valijson::adapters::RapidJsonAdapter;

struct ValijsonValidator::Parts {
  valijson::Schema schema;
  valijson::Validator validator;
};

ValijsonValidator::ValijsonValidator(const Json::Value& schema)
    : parts_(std::make_unique<Parts>()) {
  valijson::SchemaParser parser;
  parser.populateSchema(RapidJsonAdapter(schema), parts_->schema);
}

ValijsonValidator::~ValijsonValidator() = default;

bool ValijsonValidator::Accepts(const Json::Value& value) {
  valijson::ValidationResults results;
  return parts_->validator.validate(parts_->schema, RapidJsonAdapter(value), &results);
}

}  // namespace Benchmarks
