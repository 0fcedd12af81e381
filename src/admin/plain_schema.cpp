#include "admin/plain_schema.h"

#include "json/schema_keywords.h"
#include "json/schema_parts.h"
#include "json/secrets.h"
#include "json/subschemas.h"

#include <algorithm>
#include <functional>
#include <initializer_list>

namespace TarnConfigStore {
namespace {

namespace Keyword = Json::Keyword;

using Json::Value;

bool IsAnyOf(std::string_view word, std::initializer_list<std::string_view> words) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

// Those of draft-07 that mean something beside a reference, too, which hides all assertions.
bool IsAnnotation(std::string_view keyword) {
  return IsAnyOf(keyword, {"$comment", "default", "description", "examples", "readOnly", "title",
                           "writeOnly"});
}

// Those of draft-07 that hold no schemas.
bool IsPlainKeyword(std::string_view keyword) {
  return IsAnnotation(keyword) ||
         IsAnyOf(keyword, {"const",         "contentEncoding",  "contentMediaType",
                           "enum",          "exclusiveMaximum", "exclusiveMinimum",
                           "format",        "maxItems",         "maxLength",
                           "maxProperties", "maximum",          "minItems",
                           "minLength",     "minProperties",    "minimum",
                           "multipleOf",    "pattern",          "required",
                           "type",          "uniqueItems"});
}

bool IsGiven(const Value& schema, const char* keyword) {
  const Value* given = Json::FindMember(schema, keyword);
  return given != nullptr && !given->IsFalse();
}

PlainSchema::Names MembersOfOtherParts(Json::SchemaPlace place) {
  PlainSchema::Names names;
  place.ForEachProperty([&](std::string_view name, Json::SchemaPlace property) {
    if (property.OwnKind() != place.OwnKind()) {
      names.insert(name);
    }
  });
  return names;
}

}  // namespace

Value PlainSchema::Add(bool hasInstances) {
  View root;
  root.isElement = hasInstances;
  Value reference = Refer(type_.Schema(), root);
  while (!pending_.empty()) {
    const auto& [what, name] = *pending_.back();
    pending_.pop_back();
    AddMember(definitions_, name, Plain(*what.first, what.second));
  }
  return reference;
}

// A schema that refers to the definition of another.
Value PlainSchema::Refer(const Value& schema, const View& view) {
  const auto [known, isNew] = known_.try_emplace({&schema, view});
  if (isNew) {
    known->second = known_.size() == 1 ? name_ : name_ + "." + std::to_string(known_.size() - 1);
    pending_.push_back(known);
  }
  Value reference(rapidjson::kObjectType);
  AddMember(reference, Keyword::kReference,
            Json::Copy("#/definitions/" + known->second, allocator_));
  return reference;
}

void PlainSchema::AddKept(const Value& schema, Value& plain,
                          const std::function<bool(std::string_view)>& keeps) {
  for (const auto& [name, value] : schema.GetObject()) {
    if (keeps(Json::Text(name))) {
      AddMember(plain, Json::Text(name), Value(value, allocator_));
    }
  }
  if (Json::IsTrue(schema, Keyword::kSecret) && !plain.HasMember("writeOnly")) {
    plain.AddMember("writeOnly", true, allocator_);
  }
}

// A document holds the secret itself, or its mask.
Value PlainSchema::Plain(const Value& schema, const View& view) {
  if (!schema.IsObject()) {
    return Value(schema, allocator_);
  }
  Value plain = PlainUnmasked(schema, view);
  if (!Json::IsTrue(schema, Keyword::kSecret)) {
    return plain;
  }
  Value mask(rapidjson::kObjectType);
  AddMember(mask, "const", Json::Copy(Json::kMask, allocator_));
  Value either(rapidjson::kArrayType);
  either.PushBack(plain, allocator_).PushBack(mask, allocator_);
  Value masked(rapidjson::kObjectType);
  AddMember(masked, "anyOf", std::move(either));
  AddKept(schema, masked, IsAnnotation);
  return masked;
}

Value PlainSchema::PlainUnmasked(const Value& schema, const View& view) {
  const Json::SchemaPlace place = type_.At(schema, view.kind);
  View inside = view;
  inside.kind = place.OwnKind();
  const Json::SchemaReferences::Target* target = type_.References().Find(schema);
  if (target != nullptr) {
    Value plain =
        target->schema != nullptr ? Refer(*target->schema, inside) : Value(rapidjson::kObjectType);
    AddKept(schema, plain, IsAnnotation);
    return plain;
  }
  inside.elsewhere.merge(MembersOfOtherParts(place));
  Value plain(rapidjson::kObjectType);
  AddKept(schema, plain, IsPlainKeyword);
  AddInner(schema, inside, plain);
  AddDependencies(schema, inside.elsewhere, plain);
  const std::string_view id = view.isElement ? place.InstanceIdMember() : std::string_view();
  Require(schema, id == Json::kGeneratedInstanceId ? std::string_view() : id, inside.elsewhere,
          plain);
  if (view.isPlace) {
    Close(schema, view, plain);
  }
  return plain;
}

void PlainSchema::AddInner(const Value& schema, const View& view, Value& plain) {
  const Parts parts = PartsBeside(schema, view);
  Json::ForEachSubschema(schema, [&](const Value& inner, const Json::Subschema& where) {
    if (where.keyword == Keyword::kDefinitions) {
      return;  // those that are referred to have definitions of their own
    }
    Value made = Plain(inner, ViewOf(schema, where, view, parts));
    if (where.index < 0 && where.name.data() == nullptr) {
      AddMember(plain, where.keyword, std::move(made));
      return;
    }
    const std::string keyword(where.keyword);
    if (!plain.HasMember(keyword)) {
      AddMember(plain, keyword,
                Value(where.index < 0 ? rapidjson::kObjectType : rapidjson::kArrayType));
    }
    Value& holder = plain[keyword];
    if (where.index < 0) {
      AddMember(holder, where.name, std::move(made));
    } else {
      holder.PushBack(made, allocator_);
    }
  });
}

// Whether what stands under a keyword describes a value by itself.
// \param isAlone  nothing else is said of the object or list
bool PlainSchema::IsPlaceOf(const Value& schema, std::string_view keyword, bool isAlone) {
  const Value* patterns = Json::FindObject(schema, Keyword::kPatternProperties);
  if (keyword == Keyword::kItems) {
    return true;
  }
  if (keyword == Keyword::kProperties) {
    return patterns == nullptr;  // one may match
  }
  if (keyword == Keyword::kPatternProperties) {
    return isAlone && patterns->MemberCount() == 1 &&
           Json::FindObject(schema, Keyword::kProperties) == nullptr;
  }
  return isAlone && keyword == Keyword::kAdditionalProperties;
}

PlainSchema::View PlainSchema::ViewOf(const Value& schema, const Json::Subschema& where,
                                      const View& view, const Parts& parts) {
  const std::string_view keyword = where.keyword;
  const bool isList = keyword == Keyword::kItems;
  const bool isProperty = keyword == Keyword::kProperties;
  View part{.isPlace = false, .isElement = view.isPlace && isList, .kind = view.kind};
  if (keyword == "allOf") {
    return {.isPlace = false, .kind = view.kind, .elsewhere = view.elsewhere};
  }
  if (!view.isPlace || !IsPlaceOf(schema, keyword, parts.empty())) {
    return part;
  }
  View below{.isElement = isList, .kind = view.kind};
  for (const Json::SchemaPart& other : parts) {
    const Value* said = isProperty ? Json::FindProperty(*other.schema, where.name)
                        : isList   ? Json::FindMember(*other.schema, Keyword::kItems)
                                   : nullptr;
    const bool isTuple = said != nullptr && said->IsArray();
    // Whatever else may say something of the same value must be known.
    if (isProperty ? IsGiven(*other.schema, Keyword::kPatternProperties) ||
                         IsGiven(*other.schema, Keyword::kAdditionalProperties)
                   : isList && (IsGiven(*other.schema, "additionalItems") || isTuple)) {
      return part;
    }
    if (said != nullptr) {
      below.beside.push_back(said);
    }
  }
  std::sort(below.beside.begin(), below.beside.end(), std::less<>());
  return below;
}

}  // namespace TarnConfigStore
