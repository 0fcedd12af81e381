// The schemas directly inside of a schema.
#pragma once

#include "json/json.h"

#include <string>
#include <string_view>

namespace Json {

/// Where in a schema another one stands.
struct Subschema {
  std::string_view keyword;
  /// Its name under a keyword that holds schemas by name; empty otherwise.
  std::string_view name;
  /// Its place under a keyword that holds a list of schemas; -1 otherwise.
  int index = -1;

  /// The way to it, as a JSON Pointer that begins with the keyword.
  std::string Pointer() const;
};

namespace Internal {

// What the keywords of draft-07 hold, going by the value: "items" and "dependencies" hold one
// thing or another.
enum class Holds { NOTHING, SCHEMA, SCHEMA_OR_LIST, LIST, MAP };
Holds HoldsSchemas(std::string_view keyword);

}  // namespace Internal

/// Calls `visit(schema, where)` for each schema that a keyword of draft-07 puts directly inside of
/// this one, sound or not. What stands in values ("const", "enum", "default") and under names that
/// are no keywords is not taken for one.
template <class Visit>
void ForEachSubschema(const Value& schema, const Visit& visit) {
  using Internal::Holds;
  if (!schema.IsObject()) {
    return;
  }
  for (const auto& member : schema.GetObject()) {
    const std::string_view keyword = Text(member.name);
    const Holds holds = Internal::HoldsSchemas(keyword);
    if (holds == Holds::NOTHING) {
      continue;
    }
    const Value& value = member.value;
    if (value.IsArray() && holds != Holds::MAP) {
      int index = 0;
      for (const Value& element : value.GetArray()) {
        visit(element, Subschema{keyword, {}, index++});
      }
    } else if (holds == Holds::MAP && value.IsObject()) {
      for (const auto& entry : value.GetObject()) {
        if (!entry.value.IsArray()) {  // a dependency may be a list of names
          visit(entry.value, Subschema{keyword, Text(entry.name), -1});
        }
      }
    } else if (holds == Holds::SCHEMA || holds == Holds::SCHEMA_OR_LIST) {
      visit(value, Subschema{keyword, {}, -1});
    }
  }
}

}  // namespace Json
