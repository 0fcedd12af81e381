#include "valijson_validator.h"

// The adapter brings an assertion of its own and minds any other; RapidJSON is included already,
// with ours.
#define VALIJSON_USE_EXCEPTIONS 1
#pragma push_macro("RAPIDJSON_ASSERT")
#undef RAPIDJSON_ASSERT
#include <valijson/adapters/rapidjson_adapter.hpp>
#pragma pop_macro("RAPIDJSON_ASSERT")

#include <string>
#include <valijson/schema.hpp>
#include <valijson/schema_parser.hpp>
#include <valijson/validation_results.hpp>
#include <valijson/validator.hpp>

namespace Benchmarks {

using valijson::adapters::RapidJsonAdapter;

struct ValijsonValidator::Parts {
  valijson::Schema schema;
  valijson::Validator validator;
  rapidjson::Document kept;
};

namespace {

void CopyInto(const Json::Value& value, rapidjson::Document& document) {
  std::string text;
  Json::Serialize(value, text);
  document.Parse<rapidjson::kParseFullPrecisionFlag>(text.data(), text.size());
}

}  // namespace

ValijsonValidator::ValijsonValidator(const Json::Value& schema)
    : parts_(std::make_unique<Parts>()) {
  valijson::SchemaParser parser;
  rapidjson::Document document;
  CopyInto(schema, document);
  parser.populateSchema(RapidJsonAdapter(document), parts_->schema);
}

ValijsonValidator::~ValijsonValidator() = default;

void ValijsonValidator::Keep(const Json::Value& value) {
  CopyInto(value, parts_->kept);
}

bool ValijsonValidator::AcceptsKept() {
  valijson::ValidationResults results;
  return parts_->validator.validate(parts_->schema, RapidJsonAdapter(parts_->kept), &results);
}

}  // namespace Benchmarks
