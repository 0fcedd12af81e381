// Every SQL statement of the library.
#pragma once

#include "platform/db_store.h"

#include <string_view>

namespace TarnConfigStore {

using TypeStatement = DBStore::SqlStatement<std::string_view, std::string_view, std::string_view>;
using InstanceStatement =
    DBStore::SqlStatement<std::string_view, std::string_view, std::string_view, std::string_view>;

// --- Reading current configuration
// -------------------------------------------------------------------------

/// All instances of a type. Parameters: name, group, component.
inline constexpr TypeStatement GET_INSTANCES(
    "SELECT Version, Success, Identifier, UserValue, VitalValue, CachedValue, AutoConfValue, "
    "DesiredValue, CreationTime, ModifiedTime, Revision FROM Config WHERE Name = ? AND ConfigGroup "
    "= ? AND Component = ?");

/// One instance with everything. Parameters: name, group, component, identifier.
inline constexpr InstanceStatement READ_TABLE_CONFIG(
    "SELECT Version, AutoConfValue, UserValue, VitalValue, CachedValue, DesiredValue, Success, "
    "CreationTime, ModifiedTime, Revision FROM Config WHERE Name = ? AND ConfigGroup = ? AND "
    "Component = ? AND Identifier = ?");

/// One instance without vital and cached values. Parameters: name, group, component, identifier.
inline constexpr InstanceStatement READ_TABLE_USER_AUTO_CONFIG(
    "SELECT Version, AutoConfValue, UserValue, Success, CreationTime, ModifiedTime, Revision FROM "
    "Config WHERE Name = ? AND ConfigGroup = ? AND Component = ? AND Identifier = ?");

/// All of one component. Parameter: component.
inline constexpr std::string_view READ_COMPONENT =
    "SELECT ConfigGroup, Name, Version, AutoConfValue, UserValue, VitalValue, CachedValue, "
    "Identifier, Success, CreationTime, ModifiedTime, Revision FROM Config WHERE Component = ?";

/// All of one group. Parameters: group, component.
inline constexpr std::string_view READ_GROUP =
    "SELECT Name, Version, AutoConfValue, UserValue, VitalValue, CachedValue, Identifier, Success, "
    "CreationTime, ModifiedTime, Revision FROM Config WHERE ConfigGroup = ? AND Component = ?";

/// The whole store by one value expression (%1$s), which is one of the library's own constants.
/// These scan the table: they are asked for everything that is in it.
inline constexpr std::string_view READ_CONTENTS =
    "SELECT Name, %1$s as Value, AutoConfValue, Component, Identifier, Version, ConfigGroup, "
    "CreationTime, ModifiedTime, Revision FROM Config WHERE %1$s IS NOT NULL";
inline constexpr std::string_view READ_CONFIRMED_CONTENTS =
    "SELECT Name, %1$s as Value, AutoConfValue, Component, Identifier, Version, ConfigGroup, "
    "CreationTime, ModifiedTime, Revision FROM Config WHERE Success=1 AND %1$s IS NOT NULL";

/// Parameters: name, group, component, identifier.
inline constexpr InstanceStatement READ_REVISION(
    "\n   SELECT Identifier, Revision\n   FROM Config\n   WHERE Name = ? AND ConfigGroup = ? AND "
    "Component = ? AND Identifier = ?");

// --- Reading default configuration
// -------------------------------------------------------------------------

/// Parameters: name, group, component, identifier.
inline constexpr InstanceStatement GET_DEFAULT_INSTANCE(
    "SELECT Value, VitalValue, CachedValue, Identifier, Version FROM DefaultConfig WHERE Name = ? "
    "AND ConfigGroup = ? AND Component = ? AND Identifier = ?");

// --- Writing configuration
// ---------------------------------------------------------------------------------

/// Replaces all values of a row. ?1 identifier, ?2 name, ?3 group, ?4 component, ?5 version, ?6
/// success, ?7 automatic, ?8 user, ?9 vital, ?10 cached value; ?11 creation time and ?12 revision
/// base of a new row.
inline constexpr std::string_view WRITE_COMPLETE =
    "INSERT OR REPLACE INTO Config (Identifier, Name, ConfigGroup, Component, Version, Success, "
    "AutoConfValue, UserValue, VitalValue, CachedValue, CreationTime, Revision) VALUES (?1, ?2, "
    "?3, "
    "?4, ?5, ?6, ?7, ?8, ?9, ?10, COALESCE((SELECT CreationTime FROM Config WHERE Identifier = ?1 "
    "AND Name = ?2 AND ConfigGroup = ?3 AND Component = ?4), COALESCE(?11, "
    "(DATETIME(CURRENT_TIMESTAMP)))), COALESCE((SELECT Revision FROM Config WHERE Identifier = ?1 "
    "AND Name = ?2 AND ConfigGroup = ?3 AND Component = ?4), (?12)) + 1)";

// --- Looking at what is stored
// -----------------------------------------------------------------------------

#define TARN_STORED_COLUMNS                                                                       \
  "SELECT Component, ConfigGroup, Name, Identifier, Version, Success, CreationTime, "             \
  "ModifiedTime, "                                                                                \
  "Revision, UserValue NOT NULL AS HasUser, AutoConfValue NOT NULL AS HasAutomatic, VitalValue "  \
  "NOT NULL AS HasVital, CachedValue NOT NULL AS HasCached, DesiredValue NOT NULL AS HasPending " \
  "FROM Config WHERE (UserValue NOT NULL OR AutoConfValue NOT NULL OR VitalValue NOT NULL OR "    \
  "CachedValue NOT NULL OR DesiredValue NOT NULL)"
#define TARN_STORED_ORDER " ORDER BY Component, ConfigGroup, Name, Identifier"
/// What is stored, by a prefix of none to all of component, group, name and identifier, which are
/// the parameters. The first scans the table: it is asked for everything.
inline constexpr std::string_view LIST_STORED[] = {
    TARN_STORED_COLUMNS TARN_STORED_ORDER,
    TARN_STORED_COLUMNS " AND Component = ?" TARN_STORED_ORDER,
    TARN_STORED_COLUMNS " AND Component = ? AND ConfigGroup = ?" TARN_STORED_ORDER,
    TARN_STORED_COLUMNS " AND Component = ? AND ConfigGroup = ? AND Name = ?" TARN_STORED_ORDER,
    TARN_STORED_COLUMNS " AND Component = ? AND ConfigGroup = ? AND Name = ? AND Identifier = ?",
};
#undef TARN_STORED_COLUMNS
#undef TARN_STORED_ORDER

// --- Administration of types
// ---------------------------------------------------------------------------------

/// The objects that came with a type, by instance id. Parameters: name, group, component.
inline constexpr std::string_view READ_DEFAULT_INSTANCES =
    "SELECT Identifier, Version, Value, VitalValue, CachedValue FROM DefaultConfig WHERE Name = ? "
    "AND ConfigGroup = ? AND Component = ? ORDER BY Identifier";

/// Parameters: name, group, component.
inline constexpr std::string_view DELETE_DEFAULT_INSTANCES =
    "DELETE FROM DefaultConfig WHERE Name = ? AND ConfigGroup = ? AND Component = ?";

/// Parameters: identifier, name, group, component, version, user, vital and cached value.
inline constexpr std::string_view WRITE_DEFAULT_INSTANCE =
    "INSERT OR REPLACE INTO DefaultConfig (Identifier, Name, ConfigGroup, Component, Version, "
    "Value, VitalValue, CachedValue) VALUES (?, ?, ?, ?, ?, ?, ?, ?)";

/// How many instances of a type have a value. Parameters: name, group, component.
inline constexpr std::string_view COUNT_STORED_INSTANCES =
    "SELECT COUNT(*) AS Stored FROM Config WHERE Name = ? AND ConfigGroup = ? AND Component = ? "
    "AND (UserValue NOT NULL OR AutoConfValue NOT NULL OR VitalValue NOT NULL OR CachedValue NOT "
    "NULL OR DesiredValue NOT NULL)";

}  // namespace TarnConfigStore
