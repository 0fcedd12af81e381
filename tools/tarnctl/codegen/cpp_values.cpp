#include "codegen/cpp_values.h"

#include "json/schema_kinds.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>

namespace tarnctl {
namespace {

// Holds all integers of 64 bits where it has as many digits; where it has fewer, what it rounds lies
// far from the limits that are told apart by it.
using Number = long double;

struct Range {
  std::optional<Number> smallest;
  std::optional<Number> largest;

  void Raise(Number least) { smallest = smallest ? std::max(*smallest, least) : least; }
  void Lower(Number most) { largest = largest ? std::min(*largest, most) : most; }
};

Number NumberOf(const Json::Value& value) {
  return value.IsInt64()    ? static_cast<Number>(value.GetInt64())
         : value.IsUint64() ? static_cast<Number>(value.GetUint64())
                            : static_cast<Number>(value.GetDouble());
}

const Json::Value* FindNumber(const Json::Value& schema, const char* keyword) {
  const Json::Value* found = Json::FindMember(schema, keyword);
  return found != nullptr && found->IsNumber() ? found : nullptr;
}

void NarrowByLimits(const Json::Value& schema, Range& range) {
  if (const Json::Value* limit = FindNumber(schema, "minimum")) {
    range.Raise(std::ceil(NumberOf(*limit)));
  }
  if (const Json::Value* limit = FindNumber(schema, "exclusiveMinimum")) {
    range.Raise(std::floor(NumberOf(*limit)) + 1);
  }
  if (const Json::Value* limit = FindNumber(schema, "maximum")) {
    range.Lower(std::floor(NumberOf(*limit)));
  }
  if (const Json::Value* limit = FindNumber(schema, "exclusiveMaximum")) {
    range.Lower(std::ceil(NumberOf(*limit)) - 1);
  }
}

void NarrowByValues(const Json::Value& schema, Range& range) {
  Range values;
  const auto widen = [&values](const Json::Value& value) {
    if (value.IsNumber()) {
      const Number number = NumberOf(value);
      values.smallest = std::min(values.smallest.value_or(number), number);
      values.largest = std::max(values.largest.value_or(number), number);
    }
  };
  const Json::Value* listed = Json::FindMember(schema, "enum");
  if (listed != nullptr && listed->IsArray()) {
    std::for_each(listed->Begin(), listed->End(), widen);
  } else if (const Json::Value* value = FindNumber(schema, "const")) {
    widen(*value);
  }
  if (values.smallest) {
    range.Raise(*values.smallest);
    range.Lower(*values.largest);
  }
}

template <class Integer>
bool Holds(const Range& range) {
  return *range.smallest >= static_cast<Number>(std::numeric_limits<Integer>::min()) &&
         *range.largest <= static_cast<Number>(std::numeric_limits<Integer>::max());
}

}  // namespace

ValueSchema::ValueSchema(const Json::Value& place, const Json::SchemaReferences& references)
    : schema(*references.Chain(place).back()),
      kinds(Json::KindsOf(place, references)),
      isNullable(kinds.Meets(Json::ValueKinds::kNull)) {
  kinds = kinds & Json::ValueKinds(Json::ValueKinds::kAll & ~Json::ValueKinds::kNull);
}

std::string IntegerTypeOf(const Json::Value& schema) {
  Range range;
  NarrowByLimits(schema, range);
  NarrowByValues(schema, range);
  if (!range.smallest || !range.largest || *range.smallest > *range.largest) {
    return "::std::int64_t";
  }
  return Holds<std::uint8_t>(range)    ? "::std::uint8_t"
         : Holds<std::int8_t>(range)   ? "::std::int8_t"
         : Holds<std::uint16_t>(range) ? "::std::uint16_t"
         : Holds<std::int16_t>(range)  ? "::std::int16_t"
         : Holds<std::uint32_t>(range) ? "::std::uint32_t"
         : Holds<std::int32_t>(range)  ? "::std::int32_t"
         : Holds<std::int64_t>(range)  ? "::std::int64_t"
         : Holds<std::uint64_t>(range) ? "::std::uint64_t"
                                       : "::std::int64_t";
}

std::vector<std::string> EnumTextsOf(const Json::Value& schema) {
  std::vector<std::string> texts;
  const Json::Value* listed = Json::FindMember(schema, "enum");
  if (listed == nullptr || !listed->IsArray()) {
    return texts;
  }
  for (const Json::Value& value : listed->GetArray()) {
    // What "type" or a branch excludes is no text either.
    if (value.IsString() &&
        std::find(texts.begin(), texts.end(), Json::Text(value)) == texts.end()) {
      texts.emplace_back(Json::Text(value));
    }
  }
  return texts;
}

}  // namespace tarnctl
