// The compiled form of a schema: what validation walks instead of the schema's JSON. It refers to
// the schema's own texts and numbers (a limit is compared as the very number that was written), so
// it lives no longer than the schema does.
#pragma once

#include "json/json.h"
#include "json_schema/formats.h"
#include "json_schema/number.h"
#include "json_schema/pattern.h"
#include "json_schema/property_table.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <string_view>
#include <vector>

namespace JsonValidator {

using TypeSet = std::uint8_t;
constexpr TypeSet kNullType = 1;
constexpr TypeSet kBooleanType = 2;
constexpr TypeSet kIntegerType = 4;  ///< a number without fraction
constexpr TypeSet kNumberType = 8;   ///< a number with one
constexpr TypeSet kTextType = 16;
constexpr TypeSet kArrayType = 32;
constexpr TypeSet kObjectType = 64;
constexpr TypeSet kAnyType = 127;

/// The one type of a value.
inline TypeSet TypeOf(const Json::Value& value) {
  constexpr TypeSet kTypes[] = {kNullType,   kBooleanType, kBooleanType,
                                kObjectType, kArrayType,   kTextType};
  static_assert(rapidjson::kNullType == 0 && rapidjson::kFalseType == 1 &&
                rapidjson::kTrueType == 2 && rapidjson::kObjectType == 3 &&
                rapidjson::kArrayType == 4 && rapidjson::kStringType == 5);
  const rapidjson::Type type = value.GetType();
  if (type == rapidjson::kNumberType) {
    return IsWhole(value) ? kIntegerType : kNumberType;
  }
  return kTypes[type];
}

using Tags = std::uint8_t;
constexpr Tags kVitalTag = 1;
constexpr Tags kCachedTag = 2;
constexpr Tags kReadOnlyTag = 4;
constexpr Tags kInstanceIdTag = 8;
// No annotations:
constexpr Tags kDeclares = 16;  ///< the schema says which members an object may have
constexpr Tags kBranches = 32;  ///< "anyOf" or "oneOf"

struct Node;
using Nodes = std::vector<const Node*>;
constexpr std::uint64_t kUnlimited = std::numeric_limits<std::uint64_t>::max();

/// Limits that are absent are null.
struct NumberRules {
  const Json::Value* minimum = nullptr;
  const Json::Value* maximum = nullptr;
  const Json::Value* exclusiveMinimum = nullptr;
  const Json::Value* exclusiveMaximum = nullptr;
  const Json::Value* multipleOf = nullptr;
};

struct TextRules {
  std::uint64_t minLength = 0;
  std::uint64_t maxLength = kUnlimited;
  std::unique_ptr<const Pattern> pattern;
  std::string_view meaning;  ///< what the schema says of itself, beside a pattern
};

struct ArrayRules {
  std::uint64_t minItems = 0;
  std::uint64_t maxItems = kUnlimited;
  bool unique = false;
  bool hasTuple = false;  ///< "items" is an array: one schema for each of the first elements
  Nodes tuple;
  const Node* items = nullptr;  ///< of all elements, or of those past the tuple
  const Node* additionalItems = nullptr;
  const Node* contains = nullptr;

  /// The schema of an element, or null.
  const Node* Element(std::size_t index) const {
    if (!hasTuple) {
      return items;
    }
    return index < tuple.size() ? tuple[index] : additionalItems;
  }
};

struct PatternProperty {
  std::unique_ptr<const Pattern> pattern;
  const Node* node = nullptr;
};

/// What the presence of a member asks for.
struct Dependency {
  std::string_view name;
  std::vector<std::string_view> members;
  const Node* node = nullptr;  ///< that the object then has to fit, or null
};

struct ObjectRules {
  bool hasProperties = false;
  PropertyTable properties;
  std::vector<PatternProperty> patternProperties;
  const Node* additional = nullptr;  ///< null where the schema says nothing of them
  const Node* propertyNames = nullptr;
  std::vector<Dependency> dependencies;
  std::vector<std::string_view> required;  ///< those with a bit first, in the order of their bits
  std::uint64_t requiredBits = 0;
  std::uint64_t minProperties = 0;
  std::uint64_t maxProperties = kUnlimited;
};

/// Schemas that hold at the same place as the one they stand in.
struct Composition {
  const Node* reference = nullptr;  ///< where there is one, nothing else counts
  Nodes allOf;
  Nodes anyOf;
  Nodes oneOf;
  const Node* negated = nullptr;
  const Node* condition = nullptr;
  const Node* consequence = nullptr;
  const Node* alternative = nullptr;
};

/// One schema. Groups of rules that it does not have are null.
struct Node {
  const Json::Value* source = nullptr;
  bool refusesAll = false;  ///< the schema `false`
  TypeSet types = kAnyType;
  Tags tags = 0;
  Tags reachableTags = 0;  ///< its own and those of all schemas that apply to it or beneath it
  const Format* format = nullptr;
  const Json::Value* enumeration = nullptr;  ///< an array
  const Json::Value* constant = nullptr;
  std::unique_ptr<NumberRules> number;
  std::unique_ptr<TextRules> text;
  std::unique_ptr<ArrayRules> array;
  std::unique_ptr<ObjectRules> object;
  std::unique_ptr<Composition> composition;
};

/// Calls `visit` for each schema that holds at the same place as the node.
template <class Visit>
void ForEachBeside(const Node& node, const Visit& visit) {
  const auto one = [&](const Node* other) {
    if (other != nullptr) {
      visit(*other);
    }
  };
  if (node.composition) {
    const Composition& with = *node.composition;
    for (const Node* single :
         {with.reference, with.negated, with.condition, with.consequence, with.alternative}) {
      one(single);
    }
    for (const Nodes* several : {&with.allOf, &with.anyOf, &with.oneOf}) {
      for (const Node* other : *several) {
        one(other);
      }
    }
  }
  if (node.object) {
    for (const Dependency& dependency : node.object->dependencies) {
      one(dependency.node);
    }
  }
}

/// Calls `visit` for each schema of a member or an element.
template <class Visit>
void ForEachBeneath(const Node& node, const Visit& visit) {
  const auto one = [&](const Node* other) {
    if (other != nullptr) {
      visit(*other);
    }
  };
  if (node.array) {
    one(node.array->items);
    one(node.array->additionalItems);
    one(node.array->contains);
    for (const Node* element : node.array->tuple) {
      one(element);
    }
  }
  if (node.object) {
    one(node.object->additional);
    for (const Property& property : node.object->properties.All()) {
      one(property.node);
    }
    for (const PatternProperty& property : node.object->patternProperties) {
      one(property.node);
    }
  }
}

}  // namespace JsonValidator
