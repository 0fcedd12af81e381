#include "given/object_name.h"

#include "failure.h"
#include "json/pointer.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace tarnctl {
namespace {

using TarnConfigStore::ConfigStoreObjectId;

constexpr const char* kReveal = "--reveal";

/// At most `limit` parts, the last of which takes all that is left. Empty parts are kept.
std::vector<std::string> Split(std::string_view text, char separator, std::size_t limit) {
  std::vector<std::string> parts;
  while (parts.size() + 1 < limit) {
    const std::size_t end = text.find(separator);
    if (end == std::string_view::npos) {
      break;
    }
    parts.emplace_back(text.substr(0, end));
    text.remove_prefix(end + 1);
  }
  parts.emplace_back(text);
  return parts;
}

ConfigStoreObjectId Parse(std::string_view text, std::size_t fewest, std::size_t most,
                          const char* form) {
  std::vector<std::string> parts = Split(text, '/', 4);
  bool fits = parts.size() >= fewest && parts.size() <= most;
  for (const std::string& part : parts) {
    fits = fits && !part.empty();
  }
  if (!fits) {
    throw ToolError(ExitCode::USAGE, "\"" + std::string(text) + "\" is not of the form " + form);
  }
  parts.resize(4);
  return {parts[2], parts[1], parts[0], parts[3]};
}

}  // namespace

ConfigStoreObjectId ParseObject(std::string_view text) {
  return Parse(text, 3, 4, "COMPONENT/GROUP/KEY[/INSTANCE]");
}

ConfigStoreObjectId ParseType(std::string_view text) {
  return Parse(text, 3, 3, "COMPONENT/GROUP/KEY");
}

ConfigStoreObjectId ParsePrefix(std::string_view text) {
  return Parse(text, 1, 4, "COMPONENT[/GROUP[/KEY[/INSTANCE]]]");
}

bool IsGroup(std::string_view text) {
  return std::count(text.begin(), text.end(), '/') < 2;
}

ConfigStoreObjectId ParsePrefixIfGiven(std::string_view text) {
  return text.empty() ? ConfigStoreObjectId("", "", "") : ParsePrefix(text);
}

std::string FormatObject(const ConfigStoreObjectId& id) {
  std::string text = id.component + "/" + id.group + "/" + id.key;
  if (!id.instanceId.empty()) {
    text += "/" + id.instanceId;
  }
  return text;
}

MemberPath ParseMember(std::string_view text) {
  MemberPath path = Split(text, '.', std::string_view::npos);
  for (const std::string& name : path) {
    if (name.empty()) {
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
