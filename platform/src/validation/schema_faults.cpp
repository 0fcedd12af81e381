#include "validation/schema_faults.h"

#include "validation/findings.h"

#include <cstddef>
#include <limits>
#include <vector>

namespace JsonValidator {
namespace {

constexpr std::size_t kNoParent = std::numeric_limits<std::size_t>::max();

struct Seen {
  const Json::Value* value;
  std::size_t parent;
  const Json::Value* name;  // null for an element
  std::size_t index;
};

std::string PointerFrom(const std::vector<Seen>& seen, std::size_t at) {
  std::vector<const Seen*> way;
  for (; seen[at].parent != kNoParent; at = seen[at].parent) {
    way.push_back(&seen[at]);
  }
  std::string pointer;
  for (auto step = way.rbegin(); step != way.rend(); ++step) {
    const Seen& here = **step;
    AppendPointerStep(pointer, here.name != nullptr ? std::string(Json::Text(*here.name))
                                                    : std::to_string(here.index));
  }
  return pointer.empty() ? "/" : pointer;
}

}  // namespace

std::string PointerTo(const Json::Value& schema, const Json::Value& inside) {
  std::vector<Seen> seen{{&schema, kNoParent, nullptr, 0}};
  for (std::size_t i = 0; i < seen.size(); ++i) {
    const Json::Value& value = *seen[i].value;
    if (&value == &inside) {
      return PointerFrom(seen, i);
    }
    if (value.IsObject()) {
      for (const auto& member : value.GetObject()) {
        seen.push_back({&member.value, i, &member.name, 0});
      }
    } else if (value.IsArray()) {
      for (rapidjson::SizeType index = 0; index < value.Size(); ++index) {
        seen.push_back({&value[index], i, nullptr, index});
      }
    }
  }
  return "/";
}

std::string FaultsInWords(const CompiledSchema& schema) {
  const SchemaFault& first = schema.Faults().front();
  std::string text = "the schema of this type cannot be used: at " +
                     PointerTo(schema.Schema(), *first.where) + ": " + first.text;
  if (schema.Faults().size() > 1) {
    text += " (and " + std::to_string(schema.Faults().size() - 1) + " more)";
  }
  return text;
}

}  // namespace JsonValidator
