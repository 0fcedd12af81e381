#include "json/schema_kinds.h"

#include "json/schema_keywords.h"
#include "json/subschemas.h"

#include <unordered_map>

namespace Json {
namespace {

using KnownKinds = std::unordered_map<const Value*, ValueKinds>;

ValueKinds Kinds(const Value& schema, const SchemaReferences& references, KnownKinds& known) {
  const Value& resolved = *references.Chain(schema).back();
  // What is met again before it is known adds nothing.
  const auto [entry, isNew] = known.try_emplace(&resolved, ValueKinds::kAll);
  if (!isNew || !resolved.IsObject()) {
    return entry->second;
  }
  ValueKinds kinds(ValueKinds::kAll);
  const auto narrow = [&](const char* keyword, const auto& kindsOf) {
    const Value* given = FindMember(resolved, keyword);
    if (given != nullptr && given->IsArray()) {
      ValueKinds united(0);
      for (const Value& element : given->GetArray()) {
        united = united | kindsOf(element);
      }
      kinds = kinds & united;
    } else if (given != nullptr) {
      kinds = kinds & kindsOf(*given);
    }
  };
  narrow(Keyword::kType, [](const Value& name) {
    return name.IsString() ? ValueKinds::Named(Text(name)) : ValueKinds(0);
  });
  narrow("enum", ValueKinds::Of);
  if (const Value* value = FindMember(resolved, "const")) {
    kinds = kinds & ValueKinds::Of(*value);
  }
  const auto nested = [&](const Value& part) { return Kinds(part, references, known); };
  narrow("anyOf", nested);
  narrow("oneOf", nested);
  ForEachSubschema(resolved, [&](const Value& part, const Subschema& where) {
    if (where.keyword == "allOf") {
      kinds = kinds & nested(part);
    }
  });
  return known.insert_or_assign(&resolved, kinds).first->second;
}

}  // namespace

ValueKinds KindsOf(const Value& schema, const SchemaReferences& references) {
  KnownKinds known;
  return Kinds(schema, references, known);
}

}  // namespace Json
