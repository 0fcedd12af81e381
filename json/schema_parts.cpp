#include "json/schema_parts.h"

#include "json/schema_keywords.h"
#include "json/subschemas.h"

#include <algorithm>
#include <optional>
#include <set>
#include <tuple>

namespace Json {
namespace {

std::optional<Applies> AppliesUnder(std::string_view keyword) {
  if (keyword == "allOf") {
    return Applies::ALWAYS;
  }
  if (keyword == "anyOf" || keyword == "oneOf") {
    return Applies::PERHAPS;
  }
  if (keyword == "if" || keyword == "then" || keyword == "else" ||
      keyword == Keyword::kDependencies) {
    return Applies::UNDER_CONDITIONS;
  }
  return std::nullopt;
}

}  // namespace

std::vector<SchemaPart> PartsOf(const Value& schema, const SchemaReferences& references) {
  std::vector<SchemaPart> parts;
  std::set<std::tuple<const Value*, Applies, bool>> seen;
  const auto add = [&](const auto& self, const Value& part, Applies applies,
                       bool isTested) -> void {
    const SchemaPart found{references.Chain(part).back(), applies, isTested};
    if (!seen.emplace(found.schema, found.applies, isTested).second) {
      return;
    }
    parts.push_back(found);
    ForEachSubschema(*found.schema, [&](const Value& inner, const Subschema& where) {
      if (const auto innerApplies = AppliesUnder(where.keyword)) {
        self(self, inner, std::max(applies, *innerApplies), isTested || where.keyword == "if");
      }
    });
  };
  add(add, schema, Applies::ALWAYS, false);
  return parts;
}

const Value* FindObject(const Value& schema, const char* keyword) {
  const Value* found = FindMember(schema, keyword);
  return found != nullptr && found->IsObject() ? found : nullptr;
}

const Value* FindProperty(const Value& schema, std::string_view name) {
  const Value* properties = FindObject(schema, Keyword::kProperties);
  return properties != nullptr ? FindMember(*properties, name) : nullptr;
}

}  // namespace Json
