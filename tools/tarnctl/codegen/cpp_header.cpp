#include "codegen/cpp_header.h"

#include "tarnconfigstore/object_text.h"

#include "codegen/cpp_text.h"
#include "codegen/cpp_types.h"
#include "failure.h"
#include "json/schema_parts.h"
#include "json/type_schema_view.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace tarnctl {
namespace {

using Access = CppMember::Access;

struct TypeName {
  std::string component, group, key, version;

  std::string Path() const { return TarnConfigStore::FormatObjectId({key, group, component}); }
};

std::string TextOf(const Json::Value& typeFile, const char* member) {
  const Json::Value* found = Json::FindMember(typeFile, member);
  return found != nullptr && found->IsString() ? std::string(Json::Text(*found)) : std::string();
}

// What a class for a whole object has beside its accessors. A class cannot be called as a member of it.
bool IsTaken(const std::string& name) {
  constexpr std::array<std::string_view, 14> kMembers = {
      "InstanceId",    "Named",   "NewObject",  "NewPartAt",    "Object",
      "PartRemovedAt", "PartAt",  "PartMadeAt", "PartsAt",      "Read",
      "ReadAll",       "ReadOne", "Type",       "ReadInstances"};
  constexpr std::array<std::string_view, 4> kAccessors = {"Get", "Make", "Remove", "Set"};
  return std::count(kMembers.begin(), kMembers.end(), name) != 0 ||
         std::any_of(kAccessors.begin(), kAccessors.end(),
                     [&](std::string_view prefix) { return name.starts_with(prefix); });
}

// Goes after nothing that would make it an identifier.
std::string AloneName(const std::string& text) {
  const auto names = DistinctNames({text});
  const std::string& name = names.begin()->second;
  return name.front() >= '0' && name.front() <= '9' ? "N" + name : name;
}

class Writer {
 public:
  Writer(const TypeName& type, const CppTypes& types, bool hasInstances)
      : type_(type), types_(types), hasInstances_(hasInstances) {}

  std::string Write(const std::string& namespaceName) {
    Line("// Accessors for ", type_.Path(), ", version ", Inline(type_.version),
         ". Written by \"tarnctl schema generate-cpp\": to be");
    Line("// generated again, never changed.");
    Line("#pragma once\n");
    Line(
        "#include <array>\n#include <cstdint>\n#include <memory>\n#include <optional>\n#include "
        "<string>");
    Line(
        "#include <string_view>\n#include <tarnconfigstore/typed.h>\n#include <utility>\n#include "
        "<vector>\n");
    Line("namespace ", namespaceName, " {\n");
    for (const CppEnum& made : types_.enums) {
      WriteEnum(made);
    }
    for (const CppClass& made : types_.classes) {
      Line("class ", made.name, ";");
    }
    for (const CppClass& made : types_.classes) {
      WriteClass(made);
    }
    for (const CppClass& made : types_.classes) {
      for (const CppMember& member : made.members) {
        WriteDefinitions(made, member);
      }
    }
    Line("}  // namespace ", namespaceName);
    return std::move(text_);
  }

 private:
  template <class... Pieces>
  void Line(const Pieces&... pieces) {
    (text_.append(pieces), ...);
    text_ += '\n';
  }

  static std::string Inline(std::string_view text) {
    std::string joined;
    for (const std::string& line : CommentLines(text)) {
      joined.append(joined.empty() ? "" : " ").append(line);
    }
    return joined;
  }

  void Comment(const char* indent, const std::vector<std::string>& lines) {
    for (const std::string& line : lines) {
      Line(indent, "/// ", line);
    }
  }

  void WriteEnum(const CppEnum& made) {
    Line("enum class ", made.name, " {");
    for (const CppEnum::Value& value : made.values) {
      Comment("  ", CommentLines(CppLiteral(value.text)));
      Line("  ", value.name, ",");
    }
    Line("};");
    const std::string element = "::TarnConfigStore::EnumText<" + made.name + ">";
    const std::string list =
        "::std::array<" + element + ", " + std::to_string(made.values.size()) + ">";
    Line("constexpr ", list, " TextsOf(", made.name, ") {\n  return {{");
    for (const CppEnum::Value& value : made.values) {
      Line("      {", made.name, "::", value.name, ", ::std::string_view(", CppLiteral(value.text),
           ", ", std::to_string(value.text.size()), ")},");
    }
    Line("  }};\n}\n");
  }

  void WriteClass(const CppClass& made) {
    const bool isWhole = &made == &types_.classes.front();
    const std::string base = isWhole ? "::TarnConfigStore::TypedObject<" + made.name + ">"
                                     : std::string("::TarnConfigStore::TypedPart");
    Line("");
    Comment("",
            made.comment.empty() ? CommentLines(isWhole ? type_.Path() : made.name) : made.comment);
    if (!made.without.empty()) {
      Line("///\n/// Without accessors, to be read with Object()->GetPath and Object()->Get:");
      for (const std::string& what : made.without) {
        const std::vector<std::string> lines = CommentLines(what);
        for (const std::string& line : lines) {
          Line(&line == lines.data() ? "/// - " : "///   ", line);
        }
      }
    }
    Line("class ", made.name, " : public ", base, " {\n public:");
    Line("  explicit ", made.name,
         "(::std::shared_ptr<::TarnConfigStore::ConfigStoreObject> object)");
    Line("      : ", base, "(::std::move(object)) {}");
    if (isWhole) {
      WriteWhole(made.name, base);
    }
    for (const CppMember& member : made.members) {
      WriteAccessors(member);
    }
    Line("};");
  }

  void WriteWhole(const std::string& name, const std::string& base) {
    const std::string reading =
        "  static ::std::optional<" + name + "> Read(::TarnConfigStore::ConfigStore& store";
    if (hasInstances_) {
      Line("  /// A new object, which is not stored yet.");
      Line("  explicit ", name, "(const ::std::string& instanceId) : ", base,
           "(NewObject(instanceId)) {}");
      Line(reading,
           ", const ::std::string& instanceId) {\n    return ReadOne(store, instanceId);\n  }");
      Line("  static ::std::vector<", name, "> ReadAll(::TarnConfigStore::ConfigStore& store) {");
      Line("    return ReadInstances(store);\n  }");
    } else {
      Line("  /// A new object, which is not stored yet.");
      Line("  ", name, "() : ", base, "(NewObject()) {}");
      Line(reading, ") { return ReadOne(store); }");
    }
    Line("  static ::TarnConfigStore::ConfigStoreObjectId Type() {");
    Line("    return {", CppLiteral(type_.key), ", ", CppLiteral(type_.group), ", ",
         CppLiteral(type_.component), "};\n  }");
  }

  void WriteAccessors(const CppMember& member) {
    const std::string key = CppLiteral(member.name);
    Line("");
    Comment("  ", member.comment);
    if (IsPart(member)) {
      DeclareParts(member);
      return;
    }
    const std::string read =
        member.access == Access::LIST ? "::std::vector<" + member.type + ">" : member.type;
    Line("  ::std::optional<", read, "> Get", member.cppName, "() const {");
    Line("    return Object()->Get<", read, ">(", key, ");\n  }");
    if (member.access == Access::ID) {
      return;
    }
    const bool isGiven = member.access == Access::PLAIN || member.access == Access::INTEGER;
    if (isGiven) {
      Line("  void Set", member.cppName, "(::TarnConfigStore::Given<", read, "> value) {");
      Line("    value.WriteTo(*Object(), ", key, ");\n  }");
    } else {
      const bool isCheap = member.access == Access::ENUMERATION;
      Line("  void Set", member.cppName, isCheap ? "(" : "(const ", read,
           isCheap ? " value)" : "& value)", " {");
      Line("    Object()->Set(", key, ", value);\n  }");
    }
    Line("  void Remove", member.cppName, "() { Object()->Remove(", key, "); }");
  }

  static bool IsPart(const CppMember& member) {
    return member.access == Access::PART || member.access == Access::INSTANCES ||
           member.access == Access::GENERATED;
  }

  // Defined where all classes are known.
  void DeclareParts(const CppMember& member) {
    const std::string id = member.access == Access::PART ? "" : "const ::std::string& instanceId";
    if (!id.empty()) {
      Line("  ::std::vector<", member.type, "> Get", member.cppName, "() const;");
    }
    Line("  ::std::optional<", member.type, "> Get", member.cppName, "(", id, ") const;");
    Line("  /// The one that is there, or a new one.");
    Line("  ", member.type, " Make", member.cppName, "(", id, ");");
    if (member.access == Access::GENERATED) {
      Line("  /// A new one, which the store names.");
      Line("  ", member.type, " Make", member.cppName, "();");
    }
    Line("  void Remove", member.cppName, "() { Object()->Remove(", CppLiteral(member.name),
         "); }");
    if (!id.empty()) {
      Line("  /// Does nothing where there is none.");
      Line("  void Remove", member.cppName, "(", id, ");");
    }
  }

  void WriteDefinitions(const CppClass& made, const CppMember& member) {
    if (!IsPart(member)) {
      return;
    }
    const std::string key = CppLiteral(member.name);
    const bool isOne = member.access == Access::PART;
    const std::string id = isOne ? "" : "const ::std::string& instanceId";
    const std::string arguments = isOne ? key : key + ", instanceId";
    const std::string scope = " " + made.name + "::";
    if (!isOne) {
      Line("inline ::std::vector<", member.type, ">", scope, "Get", member.cppName, "() const {");
      Line("  return PartsAt<", member.type, ">(", key, ");\n}");
      Line("inline void", scope, "Remove", member.cppName, "(", id, ") {\n  PartRemovedAt(",
           arguments, ");\n}");
    }
    Line("inline ::std::optional<", member.type, ">", scope, "Get", member.cppName, "(", id,
         ") const {");
    Line("  return PartAt<", member.type, ">(", arguments, ");\n}");
    Line("inline ", member.type, scope, "Make", member.cppName, "(", id, ") {");
    Line("  return PartMadeAt<", member.type, ">(", arguments, ");\n}");
    if (member.access == Access::GENERATED) {
      Line("inline ", member.type, scope, "Make", member.cppName, "() {");
      Line("  return NewPartAt<", member.type, ">(", key, ");\n}");
    }
  }

  const TypeName& type_;
  const CppTypes& types_;
  const bool hasInstances_;
  std::string text_;
};

bool IsIdentifier(std::string_view name) {
  constexpr std::string_view kLetters = "_abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
  constexpr std::string_view kOthers = "0123456789";
  return !name.empty() && kOthers.find(name.front()) == std::string_view::npos &&
         std::all_of(name.begin(), name.end(), [&](char c) {
           return kLetters.find(c) != std::string_view::npos ||
                  kOthers.find(c) != std::string_view::npos;
         });
}

std::string NamespaceOf(const TypeName& type, const std::string& given) {
  if (given.empty()) {
    return "TarnTypes::" + AloneName(type.component) + "::" + AloneName(type.group);
  }
  bool fits = true;
  for (std::size_t begin = 0, end = 0; end != std::string::npos; begin = end + 2) {
    end = given.find("::", begin);
    fits = fits && IsIdentifier(std::string_view(given).substr(begin, end - begin));
  }
  if (!fits) {
    throw ToolError(ExitCode::USAGE, "\"" + given + "\" is no name of a namespace");
  }
  return given;
}

}  // namespace

std::string MakeCppHeader(const Json::Value& typeFile, const std::string& namespaceNames) {
  const TypeName type{TextOf(typeFile, "component"), TextOf(typeFile, "group"),
                      TextOf(typeFile, "key"), TextOf(typeFile, "version")};
  const Json::Value* schema = Json::FindObject(typeFile, "schema");
  const Json::Value any(rapidjson::kObjectType);
  const Json::TypeSchemaView view(schema != nullptr ? *schema : any);
  std::string name = AloneName(type.key);
  name += IsTaken(name) ? "Config" : "";
  const CppTypes types = ReadCppTypes(view, name);
  const bool hasInstances = !view.Root().InstanceIdMember().empty();
  return Writer(type, types, hasInstances).Write(NamespaceOf(type, namespaceNames));
}

}  // namespace tarnctl
