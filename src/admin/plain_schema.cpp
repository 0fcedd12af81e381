#include "admin/plain_schema.h"

#include "json/schema_keywords.h"
#include "json/subschemas.h"

#include <algorithm>
#include <array>
#include <functional>
#include <set>
#include <string_view>
#include <tuple>
#include <utility>

namespace TarnConfigStore {
namespace {

namespace Keyword = Json::Keyword;

using Json::Allocator;
using Json::Value;
using Names = std::set<std::string_view>;
using Schemas = std::vector<const Value*>;

constexpr const char* kSecret = "secret";
constexpr std::array kBranches = {"anyOf", "oneOf"};

// Draft-07's keywords that hold no schemas.
bool IsPlainKeyword(std::string_view keyword) {
  static constexpr std::array<std::string_view, 27> kKeywords = {"$comment",
                                                                 "const",
                                                                 "contentEncoding",
                                                                 "contentMediaType",
                                                                 "default",
                                                                 "description",
                                                                 "enum",
                                                                 "examples",
                                                                 "exclusiveMaximum",
                                                                 "exclusiveMinimum",
                                                                 "format",
                                                                 "maxItems",
                                                                 "maxLength",
                                                                 "maxProperties",
                                                                 "maximum",
                                                                 "minItems",
                                                                 "minLength",
                                                                 "minProperties",
                                                                 "minimum",
                                                                 "multipleOf",
                                                                 "pattern",
                                                                 "readOnly",
                                                                 "required",
                                                                 "title",
                                                                 "type",
                                                                 "uniqueItems",
                                                                 "writeOnly"};
  return std::find(kKeywords.begin(), kKeywords.end(), keyword) != kKeywords.end();
}

// Those that mean something beside a reference, which hides all assertions.
bool IsAnnotation(std::string_view keyword) {
  static constexpr std::array<std::string_view, 7> kKeywords = {
      "$comment", "default", "description", "examples", "readOnly", "title", "writeOnly"};
  return std::find(kKeywords.begin(), kKeywords.end(), keyword) != kKeywords.end();
}

bool IsGiven(const Value& schema, const char* keyword) {
  const Value* given = Json::FindMember(schema, keyword);
  return given != nullptr && !given->IsFalse();
}

}  // namespace

// One type, as long as it is added.
class PlainSchemas::Type {
 public:
  Type(const std::string& name, const Value& schema, PlainSchemas& all)
      : name_(name), type_(schema), all_(all) {}

  // How a schema is looked at.
  struct View {
    bool isPlace = true;     // it describes a value by itself, and is no part of another schema
    bool isElement = false;  // the value may be told apart from others by its id
    Json::Kind kind = Json::Kind::USER;  // the part of the object around it
    Schemas beside = {};                 // what other schemas say of the same value, or may
    Names elsewhere = {};                // members that belong to other parts of the object

    friend bool operator<(const View& a, const View& b) {
      return std::tie(a.isPlace, a.isElement, a.kind, a.beside, a.elsewhere) <
             std::tie(b.isPlace, b.isElement, b.kind, b.beside, b.elsewhere);
    }
  };

  // A schema that refers to the definition of another.
  Value Refer(const Value& schema, const View& view) {
    const auto [known, isNew] = known_.try_emplace({&schema, view});
    if (isNew) {
      known->second = known_.size() == 1 ? name_ : name_ + "." + std::to_string(known_.size() - 1);
      pending_.push_back(known);
    }
    Value reference(rapidjson::kObjectType);
    AddMember(reference, Keyword::kReference,
              Json::Copy("#/definitions/" + known->second, all_.allocator_));
    return reference;
  }

  // Makes the definitions that are referred to.
  void Define() {
    while (!pending_.empty()) {
      const auto& [what, name] = *pending_.back();
      pending_.pop_back();
      AddMember(all_.definitions_, name, Plain(*what.first, what.second));
    }
  }

 private:
  Value Plain(const Value& schema, const View& view);
  Value Inner(const Value& schema, const Json::Subschema& where, const Value& inner,
              const View& view, const Names& elsewhere);
  void AddMember(Value& object, std::string_view name, Value&& value) {
    object.AddMember(Json::Copy(name, all_.allocator_), value, all_.allocator_);
  }
  void AddKept(const Value& schema, Value& plain,
               const std::function<bool(std::string_view)>& keeps);
  bool NamesMembers(const Value& schema) const;
  void Close(const Value& schema, const View& view, Value& plain);
  Value NamesOf(const Value& list, const Names& elsewhere);
  void AddDependencies(const Value& schema, const Names& elsewhere, Value& plain);
  void Require(const Value& schema, std::string_view id, const Names& elsewhere, Value& plain);

  static Names MembersOfOtherParts(Json::SchemaPlace place);
  std::vector<Json::SchemaPart> PartsBeside(const Value& schema, const View& view) const;

  using Known = std::map<std::pair<const Value*, View>, std::string>;

  const std::string& name_;
  const Json::TypeSchemaView type_;
  const Json::SchemaReferences& references_ = type_.References();
  PlainSchemas& all_;
  Known known_;
  std::vector<Known::const_iterator> pending_;
};

Names PlainSchemas::Type::MembersOfOtherParts(Json::SchemaPlace place) {
  Names names;
  place.ForEachProperty([&](std::string_view name, Json::SchemaPlace property) {
    if (property.OwnKind() != place.OwnKind()) {
      names.insert(name);
    }
  });
  return names;
}

// What applies to a value beside its own schema, or may.
std::vector<Json::SchemaPart> PlainSchemas::Type::PartsBeside(const Value& schema,
                                                              const View& view) const {
  std::vector<Json::SchemaPart> parts = Json::PartsOf(schema, references_);
  parts.erase(parts.begin());
  for (const Value* beside : view.beside) {
    for (const Json::SchemaPart& part : Json::PartsOf(*beside, references_)) {
      parts.push_back({part.schema, Json::Applies::UNDER_CONDITIONS});
    }
  }
  return parts;
}

void PlainSchemas::Type::AddKept(const Value& schema, Value& plain,
                                 const std::function<bool(std::string_view)>& keeps) {
  for (const auto& [name, value] : schema.GetObject()) {
    if (keeps(Json::Text(name))) {
      AddMember(plain, Json::Text(name), Value(value, all_.allocator_));
    }
  }
  if (Json::IsTrue(schema, kSecret) && !plain.HasMember("writeOnly")) {
    plain.AddMember("writeOnly", true, all_.allocator_);
  }
}

Value PlainSchemas::Type::Plain(const Value& schema, const View& view) {
  if (!schema.IsObject()) {
    return Value(schema, all_.allocator_);
  }
  const Json::SchemaReferences::Target* target = references_.Find(schema);
  if (target != nullptr) {
    View beyond = view;
    beyond.kind = type_.At(schema, view.kind).OwnKind();
    Value plain =
        target->schema != nullptr ? Refer(*target->schema, beyond) : Value(rapidjson::kObjectType);
    AddKept(schema, plain, IsAnnotation);
    return plain;
  }
  const Json::SchemaPlace place = type_.At(schema, view.kind);
  View inside = view;
  inside.kind = place.OwnKind();
  Names elsewhere = MembersOfOtherParts(place);
  elsewhere.insert(view.elsewhere.begin(), view.elsewhere.end());
  Value plain(rapidjson::kObjectType);
  AddKept(schema, plain, IsPlainKeyword);
  Json::ForEachSubschema(schema, [&](const Value& inner, const Json::Subschema& where) {
    if (where.keyword == Keyword::kDefinitions) {
      return;  // those that are referred to have definitions of their own
    }
    Value made = Inner(schema, where, inner, inside, elsewhere);
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
      holder.PushBack(made, all_.allocator_);
    }
  });
  AddDependencies(schema, elsewhere, plain);
  const std::string_view id = view.isElement ? place.InstanceIdMember() : std::string_view();
  Require(schema, id == Json::kGeneratedInstanceId ? std::string_view() : id, elsewhere, plain);
  if (view.isPlace) {
    Close(schema, view, plain);
  }
  return plain;
}

Value PlainSchemas::Type::Inner(const Value& schema, const Json::Subschema& where,
                                const Value& inner, const View& view, const Names& elsewhere) {
  View below{
      .isPlace = false, .isElement = false, .kind = view.kind, .beside = {}, .elsewhere = {}};
  const std::string_view keyword = where.keyword;
  if (keyword == "allOf") {
    below.elsewhere = elsewhere;
    return Plain(inner, below);
  }
  const bool isList = keyword == Keyword::kItems;
  const bool isProperty = keyword == Keyword::kProperties;
  if (!view.isPlace || (!isList && !isProperty && keyword != Keyword::kAdditionalProperties &&
                        keyword != Keyword::kPatternProperties)) {
    return Plain(inner, below);
  }
  // Whatever else may say something of the same value must be known, or it is left open.
  const std::vector<Json::SchemaPart> parts = PartsBeside(schema, view);
  below.isPlace = isProperty ? Json::FindObject(schema, Keyword::kPatternProperties) == nullptr
                  : isList   ? true
                             : parts.empty();
  if (keyword == Keyword::kPatternProperties) {
    below.isPlace = below.isPlace && schema[Keyword::kPatternProperties].MemberCount() == 1 &&
                    Json::FindObject(schema, Keyword::kProperties) == nullptr;
  }
  below.isElement = isList;
  for (const Json::SchemaPart& part : parts) {
    const Value* other = isProperty ? Json::FindProperty(*part.schema, where.name)
                         : isList   ? Json::FindMember(*part.schema, Keyword::kItems)
                                    : nullptr;
    if (other != nullptr && !other->IsArray()) {
      below.beside.push_back(other);
    }
    const bool isVague = isProperty ? IsGiven(*part.schema, Keyword::kPatternProperties) ||
                                          IsGiven(*part.schema, Keyword::kAdditionalProperties)
                                    : isList && (IsGiven(*part.schema, "additionalItems") ||
                                                 (other != nullptr && other->IsArray()));
    below.isPlace = below.isPlace && !isVague;
  }
  if (!below.isPlace) {
    below = {
        .isPlace = false, .isElement = isList, .kind = view.kind, .beside = {}, .elsewhere = {}};
  }
  std::sort(below.beside.begin(), below.beside.end(), std::less<>());
  return Plain(inner, below);
}

// Whether it does so by itself, or by each of the branches of which one has to apply.
bool PlainSchemas::Type::NamesMembers(const Value& schema) const {
  if (Json::FindObject(schema, Keyword::kProperties) != nullptr) {
    return true;
  }
  return std::any_of(kBranches.begin(), kBranches.end(), [&](const char* keyword) {
    const Value* branches = Json::FindMember(schema, keyword);
    return branches != nullptr &&
           std::all_of(branches->Begin(), branches->End(), [&](const Value& branch) {
             return Json::FindObject(*references_.Chain(branch).back(), Keyword::kProperties) !=
                    nullptr;
           });
  });
}

// Objects whose members are named are closed to others, unless something says that they are not; what
// parts of the schema declare counts, as it does for the store.
void PlainSchemas::Type::Close(const Value& schema, const View& view, Value& plain) {
  if (Json::FindMember(schema, Keyword::kAdditionalProperties) != nullptr) {
    return;
  }
  const std::vector<Json::SchemaPart> parts = PartsBeside(schema, view);
  bool closes = NamesMembers(schema);
  for (const Json::SchemaPart& part : parts) {
    if (IsGiven(*part.schema, Keyword::kAdditionalProperties)) {
      return;
    }
    closes = closes || (part.applies == Json::Applies::ALWAYS && NamesMembers(*part.schema));
  }
  if (!closes) {
    return;
  }
  for (const char* keyword : {Keyword::kProperties, Keyword::kPatternProperties}) {
    for (const Json::SchemaPart& part : parts) {
      const Value* declared = Json::FindObject(*part.schema, keyword);
      if (declared == nullptr) {
        continue;
      }
      if (!plain.HasMember(keyword)) {
        AddMember(plain, keyword, Value(rapidjson::kObjectType));
      }
      for (const auto& member : declared->GetObject()) {
        if (Json::FindMember(plain[keyword], Json::Text(member.name)) == nullptr) {
          AddMember(plain[keyword], Json::Text(member.name), Value(true));
        }
      }
    }
  }
  plain.AddMember("additionalProperties", false, all_.allocator_);
}

Value PlainSchemas::Type::NamesOf(const Value& list, const Names& elsewhere) {
  Value names(rapidjson::kArrayType);
  for (const Value& name : list.GetArray()) {
    if (elsewhere.count(Json::Text(name)) == 0) {
      names.PushBack(Value(name, all_.allocator_), all_.allocator_);
    }
  }
  return names;
}

// The members that another one asks for; where it asks for a schema, that is added as all schemas are.
void PlainSchemas::Type::AddDependencies(const Value& schema, const Names& elsewhere,
                                         Value& plain) {
  const Value* dependencies = Json::FindObject(schema, Keyword::kDependencies);
  if (dependencies == nullptr) {
    return;
  }
  if (!plain.HasMember(Keyword::kDependencies)) {
    AddMember(plain, Keyword::kDependencies, Value(rapidjson::kObjectType));
  }
  for (const auto& [name, names] : dependencies->GetObject()) {
    if (names.IsArray()) {
      AddMember(plain[Keyword::kDependencies], Json::Text(name), NamesOf(names, elsewhere));
    }
  }
}

void PlainSchemas::Type::Require(const Value& schema, std::string_view id, const Names& elsewhere,
                                 Value& plain) {
  const Value* required = Json::FindMember(schema, Keyword::kRequired);
  Value names = required != nullptr ? NamesOf(*required, elsewhere) : Value(rapidjson::kArrayType);
  const bool hasId = std::any_of(names.Begin(), names.End(),
                                 [&](const Value& name) { return Json::Text(name) == id; });
  if (!id.empty() && !hasId) {
    names.PushBack(Json::Copy(id, all_.allocator_), all_.allocator_);
  }
  plain.RemoveMember(Keyword::kRequired);
  if (!names.Empty()) {
    AddMember(plain, Keyword::kRequired, std::move(names));
  }
}

Value PlainSchemas::Add(const std::string& name, const Value& type, bool hasInstances) {
  Type added(name, type, *this);
  Type::View root;
  root.isElement = hasInstances;
  Value reference = added.Refer(type, root);
  added.Define();
  return reference;
}

}  // namespace TarnConfigStore
