// What types say of their members, and what is stored of an object, by whom, and what if not.
//
// Values are given out as compact JSON. Secrets among them are "***" unless they are asked for, and so
// are their defaults and the values that a schema lists for them. What may be given for a member is
// described as far as its schema says it (JSON Schema draft-07, https://json-schema.org/draft-07);
// whether data fit is for the writes to judge. All functions write, lock and announce nothing, take a
// connection of their own, and are thread-safe.
#pragma once

#include "tarnconfigstore/config_store_object.h"
#include "tarnconfigstore/exceptions.h"
#include "tarnconfigstore/export.h"
#include "tarnconfigstore/parts.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace TarnConfigStore {

/// A type without its members.
struct TypeSummary {
  std::string component, group, key, version;
  std::string title, description;  ///< of the schema; empty where it has none
  bool hasInstances = false;
  bool needsReboot = false;     ///< changes are staged and take effect at the next boot
  bool bootAccessible = false;  ///< users may write while the host boots
};

/// Something that a schema asks of a value.
struct MemberLimit {
  std::string keyword;  ///< of JSON Schema, as "minimum"
  std::string value;    ///< what stands there, as JSON
  /// False where it is asked in some branch of the schema, under a condition, or of names that match
  /// a pattern.
  bool always = true;
};

/// What the last token of a description's pointer stands for.
enum class MemberToken : int {
  NAME = 0,      ///< a member; the object itself where the pointer is empty
  ELEMENT = 1,   ///< "*", each element of a list
  POSITION = 2,  ///< the element of a list at this index
  PATTERN = 3,   ///< a regular expression, each member whose name matches it
  OTHER = 4,     ///< "*", each member of any other name
};

/// What a type says of a member, or of an element of a list.
struct MemberDescription {
  /// JSON Pointer (RFC 6901). In explanations, elements of lists of instances are named by their ids:
  /// "/portGroups/Backup/vlan".
  std::string pointer;
  MemberToken token = MemberToken::NAME;
  std::string type;  ///< the kinds of value that it takes, as "integer or null"
  std::string title, description;
  std::optional<std::string> defaultValue;  ///< what an absent member reads as
  std::vector<MemberLimit> limits;          ///< in the schema's order
  /// The parts that data of the member belong to. USER stands for the automatic part, too: who
  /// writes decides between them.
  std::vector<ConfigPart> parts;
  bool isRequired = false;
  bool isSecret = false;
  bool isReadOnly = false;
  bool isInstanceId = false;
};

struct TypeDescription : TypeSummary {
  /// In the schema's order, the members of each object after it. What only branches of the schema
  /// name follows what it names itself. A schema that holds itself is followed once.
  std::vector<MemberDescription> members;
};

/// Describes a type.
/// \param place  JSON Pointer to the member that is described, with all below it; empty for all of
///               them. For the elements of a list stands any token
/// \param reveal  secrets are not masked
/// \return no members when the type has none at the place
/// \throws ConfigStoreException 1037 when the type is not installed
/// \throws ConfigStoreException 2000 when the schema store cannot be read, and for more than 100000
///         members
/// \throws InvalidArgumentException 2000 for a place that is no JSON Pointer
TARN_CONFIG_STORE_EXPORT TypeDescription DescribeType(const ConfigStoreObjectId& type,
                                                      const std::string& place = {},
                                                      bool reveal = false);

/// Describes the type in a type file, without a host.
/// \throws InvalidArgumentException 1081, with the path, when the file cannot be read
/// \throws InvalidArgumentException 2000 for a path that stands for several files, or none
/// \throws ValidationException 2000 with all that is wrong with the file, each field a JSON Pointer
///         into it; else as DescribeType
TARN_CONFIG_STORE_EXPORT TypeDescription DescribeTypeFile(const std::string& path,
                                                          const std::string& place = {},
                                                          bool reveal = false);

/// What becomes of a part's value when the object is read.
enum class PartRole : int {
  READ = 0,    ///< it is what is read, or is part of it
  HIDDEN = 1,  ///< another part's is read in its place
  WAITS = 2,   ///< nobody reads it before a boot, or the end of an upgrade, has confirmed it
};

/// What one part holds of a member.
struct MemberPart {
  ConfigPart part;
  PartRole role;
  std::string value;
};

/// A member of an object. Objects, and lists of instances with ids of their own, are told member by
/// member, and have no values themselves; so have no others.
struct ExplainedMember : MemberDescription {
  bool isExpanded = false;  ///< its members follow
  /// What is read; nothing where the member is absent and has no default.
  std::optional<std::string> value;
  bool isDefault = false;        ///< the value is no part's: the member is absent
  std::vector<MemberPart> held;  ///< what parts hold, those first that hide others
  /// True where the next boot changes what is read; to this, or to nothing.
  bool changesAtBoot = false;
  std::optional<std::string> afterBoot;
};

struct ObjectExplanation {
  ObjectExplanation() : id("", "", "") {}

  ConfigStoreObjectId id;
  TypeSummary type;
  bool isStored = false;           ///< otherwise all values are defaults
  std::string version;             ///< of the type, at the last write
  std::string creationTime;        ///< UTC, "YYYY-MM-DD HH:MM:SS"
  std::string modifiedTime;        ///< UTC, "YYYY-MM-DD HH:MM:SS"
  std::int32_t revision = -1;      ///< the number of writes
  bool isConfirmed = true;         ///< false while the user's part waits to be confirmed
  bool changesAtBoot = false;      ///< something waits for the next boot
  bool removedAtBoot = false;      ///< the next boot deletes the object
  std::vector<ErrorInfo> misfits;  ///< why the next boot will not apply what is staged
  /// In the schema's order; members that it does not name follow in that of the data. What only a
  /// branch of the schema names is told of where it is there.
  std::vector<ExplainedMember> members;
};

/// Explains an object: for each member the value that is read, the part that it comes from and what
/// that hides, what is read where nothing is set, and what the next boot brings. All of it is of one
/// moment.
/// \param place  as for DescribeType; elements of lists of instances by their ids. Of others, the list
///               is told as a whole
/// \return no members when neither the type nor the object has any at the place
/// \throws ConfigStoreException 1037 when the type is not installed; 2000 when the store, the schema
///         store or the upgrade context cannot be read, and for more than 100000 members
/// \throws ValidationException 2000 when the identifier does not suit its type
/// \throws InvalidArgumentException 1080 for a stored value that is no JSON, 2000 for a place that is
///         no JSON Pointer
TARN_CONFIG_STORE_EXPORT ObjectExplanation ExplainObject(const ConfigStoreObjectId& csoId,
                                                         const std::string& place = {},
                                                         bool reveal = false);

/// What GetEffectiveConfig read.
struct EffectiveConfig {
  std::shared_ptr<ConfigStoreObject> object;  ///< never empty
  bool isStored = false;                      ///< otherwise it holds defaults and nothing else
  bool hasDefaults = false;                   ///< some member of it is one
};

/// Reads an object as ConfigStore::Get does, and puts the defaults of its type in the place of what is
/// absent or null, at any depth: all that a program reads of it. Secrets are as they are.
/// Throws as ConfigStore::Get, and "Failed to connect to database".
TARN_CONFIG_STORE_EXPORT EffectiveConfig GetEffectiveConfig(const ConfigStoreObjectId& csoId);

}  // namespace TarnConfigStore
