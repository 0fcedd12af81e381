#include "json/subschemas.h"

#include "json/pointer.h"

#include <algorithm>
#include <array>
#include <utility>

namespace Json {
namespace Internal {

Holds HoldsSchemas(std::string_view keyword) {
  static constexpr std::array<std::pair<std::string_view, Holds>, 16> kKeywords = {{
      {"additionalItems", Holds::SCHEMA},
      {"additionalProperties", Holds::SCHEMA},
      {"allOf", Holds::LIST},
      {"anyOf", Holds::LIST},
      {"contains", Holds::SCHEMA},
      {"definitions", Holds::MAP},
      {"dependencies", Holds::MAP},
      {"else", Holds::SCHEMA},
      {"if", Holds::SCHEMA},
      {"items", Holds::SCHEMA_OR_LIST},
      {"not", Holds::SCHEMA},
      {"oneOf", Holds::LIST},
      {"patternProperties", Holds::MAP},
      {"properties", Holds::MAP},
      {"propertyNames", Holds::SCHEMA},
      {"then", Holds::SCHEMA},
  }};
  const auto known = std::find_if(kKeywords.begin(), kKeywords.end(),
                                  [&](const auto& entry) { return entry.first == keyword; });
  return known == kKeywords.end() ? Holds::NOTHING : known->second;
}

}  // namespace Internal

std::string Subschema::Pointer() const {
  std::string pointer;
  AppendToken(pointer, keyword);
  if (index >= 0) {
    AppendToken(pointer, std::to_string(index));
  } else if (name.data() != nullptr) {
    AppendToken(pointer, name);
  }
  return pointer;
}

}  // namespace Json
