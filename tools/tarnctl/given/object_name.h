// Objects, types and members on the command line: how they are named, and the arguments that do.
#pragma once

#include "tarnconfigstore/object_id.h"

#include "command_line.h"

#include <string>
#include <string_view>
#include <vector>

namespace tarnctl {

/// "component/group/key[/instance]"; everything after the third slash is the instance id. These
/// three raise ToolError USAGE for a text of another form.
TarnConfigStore::ConfigStoreObjectId ParseObject(std::string_view text);
/// "component/group/key".
TarnConfigStore::ConfigStoreObjectId ParseType(std::string_view text);
/// The beginning of an object's name, at a slash: "component", "component/group" and so on.
TarnConfigStore::ConfigStoreObjectId ParsePrefix(std::string_view text);

/// True for a text that names a component or a group of one, as ParsePrefix takes it.
bool IsGroup(std::string_view text);

/// As ParsePrefix, and for an empty text the prefix of everything.
TarnConfigStore::ConfigStoreObjectId ParsePrefixIfGiven(std::string_view text);

/// The text that ParseObject takes.
std::string FormatObject(const TarnConfigStore::ConfigStoreObjectId& id);

/// The names on a dotted path to a member. Raises ToolError USAGE when one of them is empty.
using MemberPath = std::vector<std::string>;
MemberPath ParseMember(std::string_view text);

/// The same, and for an empty text the empty path, which means the whole object.
MemberPath ParseMemberIfGiven(std::string_view text);

/// The names on the way of a JSON Pointer. Raises ToolError USAGE for what is none.
MemberPath ParsePlace(std::string_view pointer);

/// The text that ParseMember takes.
std::string FormatMember(const MemberPath& path);

/// The JSON Pointer of a member.
std::string PointerTo(const MemberPath& path);

inline constexpr const char* kObject = "OBJECT";
inline constexpr const char* kType = "TYPE";
inline constexpr const char* kPrefix = "PREFIX";
inline constexpr const char* kMember = "MEMBER";
inline constexpr const char* kAllInstances = "--all-instances";
inline constexpr const char* kWhere = "--where";

Argument ObjectArgument();
Argument TypeArgument();
Argument PrefixArgument();
Argument MemberArgument();

/// The option that shows secrets as they are, and whether it was given.
Argument RevealArgument();
bool Reveals(const Given& given);

/// kObject, kAllInstances and kWhere: with either of the latter the verb is about the instances of
/// the type that kObject names, as MeansInstances tells.
std::vector<Argument> ObjectOrInstancesArguments();
bool MeansInstances(const Given& given);

/// The same, kMember for a member of the one object, and RevealArgument.
std::vector<Argument> ReadArguments();

}  // namespace tarnctl
