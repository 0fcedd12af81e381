#include "json_schema/known_members.h"

#include "json/type_schema_view.h"
#include "json_schema/compiled_node.h"
#include "json_schema/describe.h"
#include "json_schema/utf8.h"

#include <algorithm>

namespace JsonValidator {

std::string UnknownMember(std::string_view name, const std::vector<const ObjectRules*>& schemas) {
  std::vector<std::string> known;
  for (const ObjectRules* schema : schemas) {
    for (const Property& property : schema->properties.All()) {
      const std::string text = Utf8::Repaired(property.name);
      if (!property.node->refusesAll && property.name != Json::kGeneratedInstanceId &&
          std::find(known.begin(), known.end(), text) == known.end()) {
        known.push_back(text);
      }
    }
  }
  return "member " + Quoted(name) + " is not known; " +
         (known.empty() ? "no members are" : "known members: " + Listed(known));
}

}  // namespace JsonValidator
