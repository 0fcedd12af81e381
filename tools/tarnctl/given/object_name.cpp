#include "given/object_name.h"

#include "tarnconfigstore/object_text.h"

#include "failure.h"
#include "json/pointer.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace tarnctl {
namespace {

using TarnConfigStore::ConfigStoreObjectId;

constexpr const char* kReveal = "--reveal";

// How much of an identifier a text has to name, and may.
enum class Names { PREFIX, TYPE, OBJECT };

ConfigStoreObjectId Parse(std::string_view text, Names names, const char* form) {
  auto id = TarnConfigStore::FindObjectId(text);
  if (!id || (names != Names::PREFIX && id->key.empty()) ||
      (names == Names::TYPE && !id->instanceId.empty())) {
    throw ToolError(ExitCode::USAGE, "\"" + std::string(text) + "\" is not of the form " + form);
  }
  return *std::move(id);
}

}  // namespace

ConfigStoreObjectId ParseObject(std::string_view text) {
  return Parse(text, Names::OBJECT, "COMPONENT/GROUP/KEY[/INSTANCE]");
}

ConfigStoreObjectId ParseType(std::string_view text) {
  return Parse(text, Names::TYPE, "COMPONENT/GROUP/KEY");
}

ConfigStoreObjectId ParsePrefix(std::string_view text) {
  return Parse(text, Names::PREFIX, "COMPONENT[/GROUP[/KEY[/INSTANCE]]]");
}

bool IsGroup(std::string_view text) {
  return std::count(text.begin(), text.end(), '/') < 2;
}

ConfigStoreObjectId ParsePrefixIfGiven(std::string_view text) {
  return text.empty() ? ConfigStoreObjectId("", "", "") : ParsePrefix(text);
}

std::string FormatObject(const ConfigStoreObjectId& id) {
  return TarnConfigStore::FormatObjectId(id);
}

MemberPath ParseMember(std::string_view text) {
  MemberPath path;
  for (std::size_t begin = 0, end = 0; end != std::string_view::npos; begin = end + 1) {
    end = text.find('.', begin);
    path.emplace_back(text.substr(begin, end - begin));
    if (path.back().empty()) {
      throw ToolError(ExitCode::USAGE, "\"" + std::string(text) + "\" does not name a member");
    }
  }
  return path;
}

MemberPath ParseMemberIfGiven(std::string_view text) {
  return text.empty() ? MemberPath() : ParseMember(text);
}

MemberPath ParsePlace(std::string_view pointer) {
  auto names = Json::ParsePointer(pointer);
  if (!names) {
    throw ToolError(ExitCode::USAGE, "\"" + std::string(pointer) + "\" is no JSON Pointer");
  }
  return std::move(*names);
}

std::string FormatMember(const MemberPath& path) {
  std::string text;
  for (const std::string& name : path) {
    text += (text.empty() ? "" : ".") + name;
  }
  return text;
}

std::string PointerTo(const MemberPath& path) {
  std::string pointer;
  for (const std::string& name : path) {
    Json::AppendToken(pointer, name);
  }
  return pointer;
}

Argument ObjectArgument() {
  return {.name = kObject, .isRequired = true};
}

Argument TypeArgument() {
  return {.name = kType, .isRequired = true};
}

std::vector<Argument> ObjectOrInstancesArguments() {
  return {{.name = kObject, .help = "A TYPE with --all-instances or --where", .isRequired = true},
          Flag(kAllInstances, "All instances of a type"),
          {.name = kWhere,
           .help = "The instances of a type whose stored member has this value; can be repeated",
           .takes = Takes::TEXTS,
           .valueName = "MEMBER=VALUE"}};
}

bool MeansInstances(const Given& given) {
  return given.Has(kAllInstances) || given.Has(kWhere);
}

Argument MemberArgument() {
  return {.name = kMember, .help = "A dotted path, through objects only"};
}

std::vector<Argument> ReadArguments() {
  std::vector<Argument> arguments = ObjectOrInstancesArguments();
  arguments.push_back(MemberArgument());
  arguments.back().excludes = {kAllInstances, kWhere};
  arguments.push_back(RevealArgument());
  return arguments;
}

bool Reveals(const Given& given) {
  return given.Has(kReveal);
}

Argument RevealArgument() {
  return Flag(kReveal, "Print secrets as they are, not as ***");
}

Argument PrefixArgument() {
  return {.name = kPrefix, .help = "COMPONENT[/GROUP[/KEY[/INSTANCE]]]"};
}

}  // namespace tarnctl
