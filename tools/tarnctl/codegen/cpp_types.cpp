#include "codegen/cpp_types.h"

#include "codegen/cpp_text.h"
#include "codegen/cpp_values.h"
#include "json/print.h"
#include "json/schema_keywords.h"
#include "json/schema_kinds.h"
#include "json/schema_parts.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <utility>

namespace tarnctl {
namespace {

namespace Keyword = Json::Keyword;
using Access = CppMember::Access;
using Names = std::map<std::string, std::string, std::less<>>;

std::string Shown(const Json::Value& value) {
  std::string text;
  Json::Print(value, Json::Layout::ONE_LINE, Json::BadText::REPAIRED, text);
  return text;
}

std::string Quoted(std::string_view name) {
  return Shown(Json::Reference(name));
}

// Reads classes one after the other: objects may contain themselves.
class Reader {
 public:
  explicit Reader(const Json::TypeSchemaView& view) : view_(view) {}

  CppTypes Read(const std::string& name) {
    names_.insert(name);
    // The whole object has a class of its own, even where objects inside are described by its schema.
    pending_.emplace_back(name, view_.Root());
    for (std::size_t read = 0; read < pending_.size(); ++read) {
      const auto [className, place] = pending_[read];
      ReadClass(className, place);
    }
    return std::move(types_);
  }

 private:
  void ReadClass(const std::string& name, Json::SchemaPlace place) {
    CppClass made{name, DescriptionOf(*place.Schema()), {}, {}};
    const auto parts = Json::PartsOf(*place.Schema(), view_.References());
    const Names names = NamesOf(parts);
    std::set<std::string_view> known;
    for (const Json::SchemaPart& part : parts) {
      const Json::Value* properties = Json::FindObject(*part.schema, Keyword::kProperties);
      if (properties != nullptr) {
        for (const auto& [key, property] : properties->GetObject()) {
          if (part.applies == Json::Applies::ALWAYS && known.insert(Json::Text(key)).second) {
            AddMember(made, place, Json::Text(key), property, names.find(Json::Text(key))->second);
          }
        }
      }
    }
    AddOthers(made, parts, known);
    types_.classes.push_back(std::move(made));
  }

  // By all that is declared, so that a name does not depend on what a branch says.
  static Names NamesOf(const std::vector<Json::SchemaPart>& parts) {
    std::set<std::string> keys;
    for (const Json::SchemaPart& part : parts) {
      if (const Json::Value* properties = Json::FindObject(*part.schema, Keyword::kProperties)) {
        for (const auto& property : properties->GetObject()) {
          keys.emplace(Json::Text(property.name));
        }
      }
    }
    return DistinctNames(keys);
  }

  void AddMember(CppClass& made, Json::SchemaPlace around, std::string_view key,
                 const Json::Value& property, const std::string& suffix) {
    if (key.empty() || key.find('\0') != std::string_view::npos) {
      made.without.push_back(Quoted(key) + ": its name is none that accessors take");
      return;
    }
    const Json::SchemaPlace place = around.Property(key);
    const std::string typeName = made.name + "_" + suffix;
    const ValueSchema value(property, view_.References());
    CppMember member{std::string(key), suffix, Access::PLAIN, {}, {}};
    if (!ReadPart(member, place, value, typeName) && !ReadValue(member, value, typeName) &&
        !ReadList(member, value, typeName)) {
      made.without.push_back(
          Quoted(key) + ": " + value.kinds.Describe() +
          (value.Is(Json::ValueKinds::kArray) ? ", of elements without one C++ type" : ""));
      return;
    }
    if (place.IsInstanceId()) {
      member.access = Access::ID;
      member.type = "::std::string";
    }
    member.comment = DescriptionOf(property);
    if (member.comment.empty()) {
      member.comment = CommentLines(Quoted(key));
    }
    AddNotes(member.comment, around, place, key, value);
    made.members.push_back(std::move(member));
  }

  // Objects that the library takes for sub-objects: those that the type's places know.
  bool ReadPart(CppMember& member, Json::SchemaPlace place, const ValueSchema& value,
                const std::string& typeName) {
    const Json::SchemaPlace items = place.Items();
    const Json::SchemaPlace objects = items ? items : place;
    if (!objects.DescribesObject()) {
      return false;
    }
    if (items) {
      if (items.InstanceIdMember().empty()) {
        return false;
      }
      member.access = items.GetsGeneratedId() ? Access::GENERATED : Access::INSTANCES;
    } else {
      bool hasMembers = false;
      place.ForEachProperty([&](std::string_view, Json::SchemaPlace) { hasMembers = true; });
      if (!value.Is(Json::ValueKinds::kObject) && !hasMembers) {
        return false;
      }
      member.access = Access::PART;
    }
    member.type = ClassOf(objects, typeName);
    return true;
  }

  bool ReadValue(CppMember& member, const ValueSchema& value, const std::string& typeName) {
    member.access = Access::PLAIN;
    if (value.Is(Json::ValueKinds::kBoolean)) {
      member.type = "bool";
    } else if (value.Is(Json::ValueKinds::kInteger)) {
      member.access = Access::INTEGER;
      member.type = IntegerTypeOf(value.schema);
    } else if (value.Is(Json::ValueKinds::kNumber) || value.Is(Json::ValueKinds::kFraction)) {
      member.type = "double";
    } else if (value.Is(Json::ValueKinds::kString)) {
      const std::vector<std::string> texts = EnumTextsOf(value.schema);
      member.access = texts.empty() ? Access::PLAIN : Access::ENUMERATION;
      member.type = texts.empty() ? "::std::string" : EnumOf(value.schema, texts, typeName);
    } else {
      return false;
    }
    return true;
  }

  bool ReadList(CppMember& member, const ValueSchema& value, const std::string& typeName) {
    const Json::Value* items = Json::FindObject(value.schema, Keyword::kItems);
    if (!value.Is(Json::ValueKinds::kArray) || items == nullptr) {
      return false;
    }
    const ValueSchema element(*items, view_.References());
    // A list has no element that could be absent.
    if (element.isNullable || !ReadValue(member, element, typeName)) {
      return false;
    }
    member.access = Access::LIST;
    return true;
  }

  std::string ClassOf(Json::SchemaPlace place, const std::string& name) {
    std::string& known = classes_[place.Schema()];
    if (known.empty()) {
      known = Unused(name);
      pending_.emplace_back(known, place);
    }
    return known;
  }

  std::string EnumOf(const Json::Value& schema, const std::vector<std::string>& texts,
                     const std::string& name) {
    std::string& known = enums_[&schema];
    if (known.empty()) {
      known = Unused(name);
      CppEnum made{known, {}};
      const Names names = DistinctNames({texts.begin(), texts.end()});
      for (const std::string& text : texts) {
        made.values.push_back({"k" + names.find(text)->second, text});
      }
      types_.enums.push_back(std::move(made));
    }
    return known;
  }

  std::string Unused(std::string name) {
    while (!names_.insert(name).second) {
      name += "x";
    }
    return name;
  }

  // Beside a reference as well as where it leads; the first on the way counts.
  std::vector<std::string> DescriptionOf(const Json::Value& schema) const {
    for (const char* keyword : {"description", "title"}) {
      for (const Json::Value* found : view_.References().Chain(schema)) {
        const Json::Value* text = Json::FindMember(*found, keyword);
        if (text != nullptr && text->IsString()) {
          return CommentLines(Json::Text(*text));
        }
      }
    }
    return {};
  }

  static void AddNotes(std::vector<std::string>& comment, Json::SchemaPlace around,
                       Json::SchemaPlace place, std::string_view key, const ValueSchema& value) {
    const auto add = [&comment](const std::string& note) {
      for (std::string& line : CommentLines(note)) {
        comment.push_back(std::move(line));
      }
    };
    if (const Json::Value* fallback = place.Default()) {
      add(place.HoldsSecrets() ? "Has a default." : "Default: " + Shown(*fallback));
    }
    std::string limits;
    for (const char* keyword : {"minimum", "exclusiveMinimum", "maximum", "exclusiveMaximum"}) {
      if (const Json::Value* limit = Json::FindMember(value.schema, keyword)) {
        limits.append(limits.empty() ? "" : ", ").append(keyword).append(" ").append(Shown(*limit));
      }
    }
    add(limits.empty() ? limits : "Limits: " + limits);
    if (place.OwnKind() != Json::Kind::USER) {
      add(place.OwnKind() == Json::Kind::VITAL ? "Vital." : "Cached.");
    }
    if (around.CanRequire(key)) {
      add("Required, always or under a condition.");
    }
    if (place.IsSecret()) {
      add("Secret.");
    }
    if (value.isNullable) {
      add("May be null, which reads as absent.");
    }
  }

  // What an object may hold beside the members that it always declares.
  static void AddOthers(CppClass& made, const std::vector<Json::SchemaPart>& parts,
                        const std::set<std::string_view>& known) {
    std::set<std::string> notes;
    for (const Json::SchemaPart& part : parts) {
      if (const Json::Value* properties = Json::FindObject(*part.schema, Keyword::kProperties)) {
        for (const auto& property : properties->GetObject()) {
          if (known.count(Json::Text(property.name)) == 0) {
            notes.insert(Quoted(Json::Text(property.name)) + ": declared in a branch");
          }
        }
      }
      if (const Json::Value* patterns =
              Json::FindObject(*part.schema, Keyword::kPatternProperties)) {
        for (const auto& pattern : patterns->GetObject()) {
          notes.insert("members whose names match " + Quoted(Json::Text(pattern.name)));
        }
      }
      const Json::Value* others = Json::FindMember(*part.schema, Keyword::kAdditionalProperties);
      if (others != nullptr && !others->IsFalse()) {
        notes.insert("members of other names");
      }
    }
    made.without.insert(made.without.end(), notes.begin(), notes.end());
  }

  const Json::TypeSchemaView& view_;
  std::set<std::string> names_;
  std::map<const Json::Value*, std::string> classes_;
  std::map<const Json::Value*, std::string> enums_;
  std::vector<std::pair<std::string, Json::SchemaPlace>> pending_;
  CppTypes types_;
};

}  // namespace

CppTypes ReadCppTypes(const Json::TypeSchemaView& view, const std::string& name) {
  return Reader(view).Read(name);
}

}  // namespace tarnctl
