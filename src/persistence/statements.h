// The SQL statements of the library; those about the next boot lie beside them in boot_statements.h.
#pragma once

#include "platform/db_store.h"

#include <array>
#include <string_view>

namespace TarnConfigStore {

using TypeStatement = DBStore::SqlStatement<std::string_view, std::string_view, std::string_view>;
using InstanceStatement =
    DBStore::SqlStatement<std::string_view, std::string_view, std::string_view, std::string_view>;

// Reading current configuration:

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

// Revisions and instance ids, read by the places of the columns:

/// Parameters: name, group, component, identifier.
inline constexpr InstanceStatement READ_REVISION(
    "\n   SELECT Identifier, Revision\n   FROM Config\n   WHERE Name = ? AND ConfigGroup = ? AND "
    "Component = ? AND Identifier = ?");

/// Parameters: name, group, component.
inline constexpr TypeStatement READ_INSTANCE_IDS(
    "SELECT Identifier FROM Config\n         WHERE Name = ? AND ConfigGroup = ? AND Component = "
    "?");

/// Parameters: name, group, component.
inline constexpr TypeStatement READ_INSTANCE_REVISIONS(
    "SELECT Identifier, Revision\n            FROM Config\n            WHERE Name = ? AND "
    "ConfigGroup = ? AND Component = ?");

/// What a bulk write has to carry over. Parameters: name, group, component.
inline constexpr TypeStatement READ_EXISTING_INSTANCES(
    "\n      SELECT Identifier, Revision, CreationTime FROM Config\n      WHERE Name = ? AND "
    "ConfigGroup = ? AND Component = ?;\n   ");

// Reading default configuration:

/// Parameters: name, group, component, identifier.
inline constexpr InstanceStatement GET_DEFAULT_INSTANCE(
    "SELECT Value, VitalValue, CachedValue, Identifier, Version FROM DefaultConfig WHERE Name = ? "
    "AND ConfigGroup = ? AND Component = ? AND Identifier = ?");

/// Parameters: name, group, component.
inline constexpr TypeStatement GET_DEFAULT_INSTANCES(
    "SELECT Value, VitalValue, CachedValue, Identifier, Version FROM DefaultConfig WHERE Name = ? "
    "AND ConfigGroup = ? AND Component = ?");

/// Parameters: name, group, component, identifier.
inline constexpr InstanceStatement GET_DEFAULT_USER_INSTANCE(
    "SELECT Value, Identifier, Version FROM DefaultConfig WHERE Name = ? AND ConfigGroup = ? AND "
    "Component = ? AND Identifier = ?");

/// Parameters: name, group, component.
inline constexpr TypeStatement GET_DEFAULT_USER_INSTANCES(
    "SELECT Value, Identifier, Version FROM DefaultConfig WHERE Name = ? AND ConfigGroup = ? AND "
    "Component = ?");

// Writing configuration:

// A write makes the row of a key, ?1 identifier, ?2 name, ?3 group and ?4 component, or replaces
// what is in it, and never moves it. INSERT OR REPLACE takes a row out and puts it in again behind
// all others, so that reading the rows in the order of their keys jumps from page to page in the
// end. As there, columns that a write neither sets nor carries over take their defaults, which are
// those of `excluded`: the time of modification always does.
#define TARN_NEW_ROW(columns) \
  "INSERT INTO Config (Identifier, Name, ConfigGroup, Component, Version, " columns
#define TARN_FIRST_WRITE "(DATETIME(CURRENT_TIMESTAMP)), 1"
#define TARN_ROW_THERE                                                                \
  ") ON CONFLICT (Component, ConfigGroup, Name, Identifier) DO UPDATE SET Version = " \
  "excluded.Version"
#define TARN_TAKE(column) ", " column " = excluded." column
#define TARN_NEXT_WRITE                                              \
  TARN_TAKE("ModifiedTime")                                          \
  ", CreationTime = COALESCE(CreationTime, excluded.CreationTime), " \
  "Revision = COALESCE(Revision, 0) + 1"

/// Replaces all values of a row. ?1 to ?4 the key, ?5 version, ?6 success, ?7 automatic, ?8 user,
/// ?9 vital, ?10 cached value; ?11 creation time and ?12 revision base of a new row.
inline constexpr std::string_view WRITE_COMPLETE = TARN_NEW_ROW(
    "Success, AutoConfValue, UserValue, VitalValue, CachedValue, CreationTime, "
    "Revision) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, COALESCE(?11, "
    "(DATETIME(CURRENT_TIMESTAMP))), (?12) + 1") TARN_ROW_THERE TARN_TAKE("Success")
    TARN_TAKE("AutoConfValue") TARN_TAKE("UserValue") TARN_TAKE("VitalValue")
        TARN_TAKE("CachedValue") TARN_TAKE("DesiredValue") TARN_NEXT_WRITE;

/// The user value. ?5 version, ?6 success, ?7 value. A pending value goes.
inline constexpr std::string_view WRITE_USER = TARN_NEW_ROW(
    "Success, UserValue, CreationTime, Revision) VALUES (?1, ?2, ?3, ?4, ?5, ?6, "
    "?7, " TARN_FIRST_WRITE) TARN_ROW_THERE TARN_TAKE("Success") TARN_TAKE("UserValue")
    TARN_TAKE("DesiredValue") TARN_NEXT_WRITE;

/// One of the other values; everything else of the row is carried over. ?5 version, ?6 value.
#define TARN_WRITE_VALUE(column)                                                                 \
  TARN_NEW_ROW(                                                                                  \
      column                                                                                     \
      ", Success, CreationTime, Revision) VALUES (?1, ?2, ?3, ?4, ?5, ?6, 1, " TARN_FIRST_WRITE) \
  TARN_ROW_THERE TARN_TAKE(column)                                                               \
  TARN_NEXT_WRITE
inline constexpr std::string_view WRITE_CACHED = TARN_WRITE_VALUE("CachedValue");
inline constexpr std::string_view WRITE_VITAL = TARN_WRITE_VALUE("VitalValue");
inline constexpr std::string_view WRITE_AUTOMATIC = TARN_WRITE_VALUE("AutoConfValue");
#undef TARN_WRITE_VALUE

/// The layers that an update in one context may change; a pending value goes. ?5 version, ?6 user
/// value (automatic, in the last), ?7 vital, ?8 cached value. The first also confirms the row.
#define TARN_WRITE_LAYERS(column)                                                        \
  TARN_NEW_ROW(column                                                                    \
               ", VitalValue, CachedValue, CreationTime, Revision) VALUES (?1, ?2, ?3, " \
               "?4, ?5, ?6, ?7, ?8, " TARN_FIRST_WRITE)                                  \
  TARN_ROW_THERE TARN_TAKE(column) TARN_TAKE("VitalValue") TARN_TAKE("CachedValue")      \
      TARN_TAKE("DesiredValue") TARN_NEXT_WRITE
inline constexpr std::string_view WRITE_CONTEXT_UPGRADE =
    TARN_WRITE_LAYERS("UserValue") TARN_TAKE("Success");
inline constexpr std::string_view WRITE_CONTEXT_USER = TARN_WRITE_LAYERS("UserValue");
inline constexpr std::string_view WRITE_CONTEXT_AUTOMATIC = TARN_WRITE_LAYERS("AutoConfValue");
#undef TARN_WRITE_LAYERS

/// The kernel's options: they wait in the row until a boot is confirmed; automatic and cached value
/// go. ?5 version, ?6 pending, ?7 vital value.
inline constexpr std::string_view WRITE_KERNEL_OPTIONS = TARN_NEW_ROW(
    "DesiredValue, VitalValue, CreationTime, Revision) VALUES (?1, ?2, ?3, ?4, ?5, "
    "?6, ?7, " TARN_FIRST_WRITE) TARN_ROW_THERE TARN_TAKE("DesiredValue") TARN_TAKE("VitalValue")
    TARN_TAKE("AutoConfValue") TARN_TAKE("CachedValue") TARN_TAKE("Success") TARN_NEXT_WRITE;

#undef TARN_NEXT_WRITE
#undef TARN_TAKE
#undef TARN_ROW_THERE
#undef TARN_FIRST_WRITE
#undef TARN_NEW_ROW

/// The same layers of a row that is there, without counting it as a write. Parameters: user value
/// (automatic, in the last), vital, cached value, name, group, component, identifier.
inline constexpr std::string_view UPDATE_CONTEXT_UPGRADE =
    "UPDATE Config SET UserValue = ?, VitalValue = ?, CachedValue = ?, DesiredValue = NULL WHERE "
    "Name = ? AND ConfigGroup = ? AND Component = ? AND Identifier = ?";
inline constexpr std::string_view UPDATE_CONTEXT_USER =
    "UPDATE Config SET UserValue = ?, VitalValue = ?, CachedValue = ? WHERE Name = ? AND "
    "ConfigGroup = ? AND Component = ? AND Identifier = ?";
inline constexpr std::string_view UPDATE_CONTEXT_AUTOMATIC =
    "UPDATE Config SET AutoConfValue = ?, VitalValue = ?, CachedValue = ? WHERE Name = ? AND "
    "ConfigGroup = ? AND Component = ? AND Identifier = ?";

// Deleting configuration:

/// Parameters: name, group, component, identifier.
inline constexpr InstanceStatement DELETE_ROW(
    "DELETE FROM 'Config' WHERE Name=? and ConfigGroup=? and Component=? and Identifier=?");

/// Parameters: name, group, component.
inline constexpr TypeStatement DELETE_INSTANCES(
    "DELETE FROM Config WHERE Name = ? AND ConfigGroup = ? AND Component = ?;");

/// One value of all instances of a type; the rows stay. Parameters: name, group, component.
inline constexpr TypeStatement DELETE_VITAL_VALUES(
    "UPDATE Config SET VitalValue = NULL WHERE Name = ? AND ConfigGroup = ? AND Component = ?");
inline constexpr TypeStatement DELETE_CACHED_VALUES(
    "UPDATE Config SET CachedValue = NULL WHERE Name = ? AND ConfigGroup = ? AND Component = ?");
inline constexpr TypeStatement DELETE_USER_VALUES(
    "UPDATE Config SET UserValue = NULL WHERE Name = ? AND ConfigGroup = ? AND Component = ?");
inline constexpr TypeStatement DELETE_AUTOMATIC_VALUES(
    "UPDATE Config SET AutoConfValue = NULL WHERE Name = ? AND ConfigGroup = ? AND Component = ?");

// Looking at what is stored:

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
inline constexpr std::array<std::string_view, 5> LIST_STORED = {
    TARN_STORED_COLUMNS TARN_STORED_ORDER,
    TARN_STORED_COLUMNS " AND Component = ?" TARN_STORED_ORDER,
    TARN_STORED_COLUMNS " AND Component = ? AND ConfigGroup = ?" TARN_STORED_ORDER,
    TARN_STORED_COLUMNS " AND Component = ? AND ConfigGroup = ? AND Name = ?" TARN_STORED_ORDER,
    TARN_STORED_COLUMNS " AND Component = ? AND ConfigGroup = ? AND Name = ? AND Identifier = ?",
};
#undef TARN_STORED_COLUMNS

/// The same for what is staged.
#define TARN_STAGED_COLUMNS                                                                  \
  "SELECT Component, ConfigGroup, Name, Identifier, Version, BootAction, Value NOT NULL AS " \
  "HasUser, VitalValue NOT NULL AS HasVital, CachedValue NOT NULL AS HasCached FROM "        \
  "DesiredUserConfig"
inline constexpr std::array<std::string_view, 5> LIST_STAGED = {
    // Texts that belong together. NOLINTNEXTLINE(bugprone-suspicious-missing-comma)
    TARN_STAGED_COLUMNS TARN_STORED_ORDER,
    TARN_STAGED_COLUMNS " WHERE Component = ?" TARN_STORED_ORDER,
    TARN_STAGED_COLUMNS " WHERE Component = ? AND ConfigGroup = ?" TARN_STORED_ORDER,
    TARN_STAGED_COLUMNS " WHERE Component = ? AND ConfigGroup = ? AND Name = ?" TARN_STORED_ORDER,
    TARN_STAGED_COLUMNS " WHERE Component = ? AND ConfigGroup = ? AND Name = ? AND Identifier = ?",
};
#undef TARN_STAGED_COLUMNS

#define TARN_BY_PREFIX(select, ofType)                                                  \
  {                                                                                     \
    select TARN_STORED_ORDER, select " AND Component = ?" TARN_STORED_ORDER,            \
        select " AND Component = ? AND ConfigGroup = ?" TARN_STORED_ORDER,              \
        ofType " AND Component = ? AND ConfigGroup = ? AND Name = ?" TARN_STORED_ORDER, \
        ofType " AND Component = ? AND ConfigGroup = ? AND Name = ? AND Identifier = ?" \
  }
/// One value of all rows that hold it, as "Value", by a prefix. Of one type, no row says again which.
#define TARN_ONE_VALUE(column, type) \
  "SELECT " type "Identifier, Success, " column " AS Value FROM Config WHERE " column " NOT NULL"
#define TARN_VALUES(column)                                                \
  TARN_BY_PREFIX(TARN_ONE_VALUE(column, "Component, ConfigGroup, Name, "), \
                 TARN_ONE_VALUE(column, ""))
inline constexpr std::array<std::string_view, 5> READ_USER_VALUES = TARN_VALUES("UserValue");
inline constexpr std::array<std::string_view, 5> READ_AUTOMATIC_VALUES =
    TARN_VALUES("AutoConfValue");
inline constexpr std::array<std::string_view, 5> READ_VITAL_VALUES = TARN_VALUES("VitalValue");
inline constexpr std::array<std::string_view, 5> READ_CACHED_VALUES = TARN_VALUES("CachedValue");
inline constexpr std::array<std::string_view, 5> READ_PENDING_VALUES = TARN_VALUES("DesiredValue");
#undef TARN_VALUES
#undef TARN_ONE_VALUE

/// Everything that is staged, by a prefix, in the order in which it is applied.
#define TARN_RECORDS                                                                           \
  "SELECT Component, ConfigGroup, Name, Identifier, Version, BootAction, Value AS UserValue, " \
  "VitalValue, CachedValue FROM DesiredUserConfig WHERE true"
inline constexpr std::array<std::string_view, 5> READ_STAGED_RECORDS =
    TARN_BY_PREFIX(TARN_RECORDS, TARN_RECORDS);
#undef TARN_RECORDS
#undef TARN_BY_PREFIX
#undef TARN_STORED_ORDER

/// One row, whatever the store holds.
inline constexpr std::string_view READ_SOMETHING =
    "SELECT COUNT(*) FROM (SELECT 1 FROM Config LIMIT 1)";

// Administration of types:

/// The objects that came with a type, by instance id. Parameters: name, group, component.
inline constexpr std::string_view READ_DEFAULT_INSTANCES =
    "SELECT Identifier, Version, Value, VitalValue, CachedValue FROM DefaultConfig WHERE Name = ? "
    "AND ConfigGroup = ? AND Component = ? ORDER BY Identifier";

/// The types that there are rows of. Both scan their table: they are asked for all of it.
inline constexpr std::string_view READ_TYPES_WITH_DEFAULTS =
    "SELECT DISTINCT Component, ConfigGroup, Name FROM DefaultConfig ORDER BY Component, "
    "ConfigGroup, Name";
inline constexpr std::string_view READ_STORED_TYPES =
    "SELECT DISTINCT Component, ConfigGroup, Name FROM Config ORDER BY Component, ConfigGroup, "
    "Name";

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

/// All values of a row that is there, divided again, and the version that they are of; no write of
/// the object, so revision and times of its own stay. Parameters: version, user, automatic, vital,
/// cached and pending value, name, group, component, identifier.
inline constexpr std::string_view REDIVIDE_ROW =
    "UPDATE Config SET Version = ?, UserValue = ?, AutoConfValue = ?, VitalValue = ?, CachedValue "
    "= ?, DesiredValue = ? WHERE Name = ? AND ConfigGroup = ? AND Component = ? AND Identifier = "
    "?";

/// The changes that are staged of a type. Parameters: name, group, component.
inline constexpr std::string_view READ_STAGED_OF_TYPE =
    "SELECT Component, ConfigGroup, Name, Identifier, Value AS UserValue, VitalValue, CachedValue, "
    "BootAction FROM DesiredUserConfig WHERE Name = ? AND ConfigGroup = ? AND Component = ? ORDER "
    "BY Identifier";

}  // namespace TarnConfigStore
