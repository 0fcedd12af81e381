// The SQL statements about the next boot: what is staged for it, what waits in rows, and what becomes of both.
#pragma once

#include "persistence/statements.h"

namespace TarnConfigStore {

// Staging for the next boot:

// A record that is there is replaced where it lies, as rows of Config are (statements.h).
#define TARN_RESTAGE                                                                           \
  " ON CONFLICT (Component, ConfigGroup, Name, Identifier) DO UPDATE SET Version = "           \
  "excluded.Version, Value = excluded.Value, VitalValue = excluded.VitalValue, CachedValue = " \
  "excluded.CachedValue, BootAction = excluded.BootAction"

/// Gives an instance content. ?1 identifier, ?2 name, ?3 group, ?4 component, ?5 version, ?6 user,
/// ?7 vital, ?8 cached value, ?9 action.
inline constexpr std::string_view STAGE_SET =
    "INSERT INTO DesiredUserConfig (Identifier, Name, ConfigGroup, Component, Version, Value, "
    "VitalValue, CachedValue, BootAction) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9)" TARN_RESTAGE;

/// Deletes. ?1 to ?5 as above, ?6 action.
inline constexpr std::string_view STAGE_DELETE =
    "INSERT INTO DesiredUserConfig (Identifier, Name, ConfigGroup, Component, Version, BootAction) "
    "VALUES (?1, ?2, ?3, ?4, ?5, ?6)" TARN_RESTAGE;

#undef TARN_RESTAGE

/// The instances of a type of which something is staged. Parameters: name, group, component.
inline constexpr TypeStatement READ_STAGED_IDS(
    "SELECT Identifier FROM DesiredUserConfig WHERE Name = ? AND ConfigGroup = ? AND Component = "
    "?");

/// Takes back what is staged for a type. Parameters: name, group, component.
inline constexpr TypeStatement UNSTAGE_TYPE(
    "DELETE FROM DesiredUserConfig WHERE Name = ? AND ConfigGroup = ? AND Component = ?;");

/// One staged change, once it is applied. Parameters: name, group, component, identifier.
inline constexpr InstanceStatement UNSTAGE_INSTANCE(
    "DELETE FROM DesiredUserConfig WHERE Name = ? AND ConfigGroup = ? AND Component = ? AND "
    "Identifier = ?");

/// All of them at once.
inline constexpr std::string_view UNSTAGE_ALL = "DELETE FROM DesiredUserConfig";

/// Staged content. Parameters: name, group, component, identifier.
inline constexpr InstanceStatement READ_STAGED_INSTANCE(
    "SELECT Version, Value as UserValue, VitalValue, CachedValue FROM DesiredUserConfig WHERE "
    "BootAction = 'SET' AND Name = ? AND ConfigGroup = ? AND Component = ? AND Identifier = ?");

/// All that is staged of an object: its own change, and deletions of its whole type. Parameters: name,
/// group, component, identifier.
inline constexpr InstanceStatement READ_STAGED_OF_OBJECT(
    "SELECT Identifier, Version, Value, VitalValue, CachedValue, BootAction FROM DesiredUserConfig "
    "WHERE Name = ? AND ConfigGroup = ? AND Component = ? AND (Identifier = ? OR BootAction = "
    "'DELETE')");

/// Parameters: name, group, component.
inline constexpr TypeStatement READ_STAGED_INSTANCES(
    "SELECT Version, Identifier, Value as UserValue, VitalValue, CachedValue FROM "
    "DesiredUserConfig WHERE BootAction = 'SET' AND Name = ? AND ConfigGroup = ? AND Component = "
    "?");

/// Everything that is staged, in the order in which it is applied. Scans the table: it is asked for
/// all of it.
inline constexpr std::string_view READ_STAGED =
    "SELECT Component, ConfigGroup, Name, Identifier, Version, Value AS UserValue, VitalValue, "
    "CachedValue, BootAction FROM DesiredUserConfig ORDER BY Component, ConfigGroup, Name, "
    "Identifier";

// What is to take effect:

#define TARN_DESIRED "CASE Success WHEN 0 THEN UserValue ELSE DesiredValue END"
#define TARN_DESIRED_ROW \
  " FROM Config WHERE Name = ? AND ConfigGroup = ? AND Component = ? AND Identifier = ? AND "
#define TARN_DESIRED_TYPE " FROM Config WHERE Name = ? AND ConfigGroup = ? AND Component = ? AND "
#define TARN_ANY_VALUE "(Value NOT NULL OR VitalValue NOT NULL OR CachedValue NOT NULL)"

/// The value of a row that is to take effect, as an expression.
inline constexpr std::string_view DESIRED_VALUE = TARN_DESIRED;

/// One instance, with and without vital and cached values. Parameters: name, group, component,
/// identifier.
inline constexpr InstanceStatement READ_DESIRED_ALL_PARTS(
    "SELECT Version, " TARN_DESIRED
    " Value, VitalValue, CachedValue, CreationTime, ModifiedTime, "
    "Revision" TARN_DESIRED_ROW TARN_ANY_VALUE);
inline constexpr InstanceStatement READ_DESIRED_USER(
    "SELECT Version, " TARN_DESIRED " Value, CreationTime, ModifiedTime, Revision" TARN_DESIRED_ROW
    "Value IS NOT NULL");

/// The same for all instances of a type. Parameters: name, group, component.
inline constexpr TypeStatement READ_DESIRED_INSTANCES_ALL_PARTS(
    "SELECT Identifier, " TARN_DESIRED
    " Value, VitalValue, CachedValue, Version, CreationTime, "
    "ModifiedTime, Revision" TARN_DESIRED_TYPE TARN_ANY_VALUE);
inline constexpr TypeStatement READ_DESIRED_INSTANCES_USER(
    "SELECT Identifier, " TARN_DESIRED
    " Value, Version, CreationTime, ModifiedTime, Revision" TARN_DESIRED_TYPE "Value NOT NULL");

#undef TARN_ANY_VALUE
#undef TARN_DESIRED_TYPE
#undef TARN_DESIRED_ROW
#undef TARN_DESIRED

/// The kernel's options for the next boot, and the same while the host is being remediated.
inline constexpr std::string_view READ_KERNEL_OPTIONS =
    "SELECT Version, CASE WHEN DesiredValue IS NULL THEN UserValue ELSE DesiredValue END AS Value, "
    "VitalValue FROM Config WHERE Name = 'options' AND ConfigGroup = 'tkernel' AND Component = "
    "'tarn';";
inline constexpr std::string_view READ_REMEDIATED_KERNEL_OPTIONS =
    "SELECT duc1.Version, duc1.Value, c1.VitalValue FROM DesiredUserConfig duc1 LEFT JOIN Config "
    "c1 ON duc1.Name = c1.Name AND duc1.ConfigGroup = c1.ConfigGroup AND duc1.Component = "
    "c1.Component WHERE duc1.Name = 'options' AND duc1.ConfigGroup = 'tkernel' AND duc1.Component "
    "= 'tarn' UNION SELECT duc2.Version, duc2.Value, c2.VitalValue FROM Config c2 LEFT JOIN "
    "DesiredUserConfig duc2 ON c2.Name = duc2.Name AND c2.ConfigGroup = duc2.ConfigGroup AND "
    "c2.Component = duc2.Component WHERE c2.Name = 'options' AND c2.ConfigGroup = 'tkernel' AND "
    "c2.Component = 'tarn';";

// After the boot:

// Rows that nothing waits in are left alone, so that their time of modification tells the truth.

/// Makes what is pending current and confirms the row. Parameters: name, group, component and, in
/// the first, identifier.
#define TARN_CONFIRM                                                                    \
  "UPDATE Config SET UserValue = CASE WHEN DesiredValue IS NULL THEN UserValue ELSE "   \
  "DesiredValue END, DesiredValue = NULL, Success = 1 WHERE (DesiredValue NOT NULL OR " \
  "Success = 0)"
#define TARN_OF_TYPE " AND Name = ? AND ConfigGroup = ? AND Component = ?"
// Of all types shared with a SmartNIC, while the schema store is attached.
#define TARN_OF_SHARED_TYPES                                                          \
  " AND (Component, ConfigGroup, Name) IN (SELECT Component, ConfigGroup, Name FROM " \
  "ss.SmartnicSchema WHERE ValueType = 'tarn-shared')"
inline constexpr InstanceStatement CONFIRM_INSTANCE(TARN_CONFIRM TARN_OF_TYPE
                                                    " AND Identifier = ?");
inline constexpr TypeStatement CONFIRM_TYPE(TARN_CONFIRM TARN_OF_TYPE);
inline constexpr std::string_view CONFIRM_SHARED = TARN_CONFIRM TARN_OF_SHARED_TYPES;
#undef TARN_CONFIRM

/// Drops what is pending. Parameters as above.
#define TARN_DROP_PENDING "UPDATE Config SET DesiredValue = NULL WHERE DesiredValue NOT NULL"
inline constexpr InstanceStatement DROP_PENDING_OF_INSTANCE(TARN_DROP_PENDING TARN_OF_TYPE
                                                            " AND Identifier = ?");
inline constexpr TypeStatement DROP_PENDING_OF_TYPE(TARN_DROP_PENDING TARN_OF_TYPE);
inline constexpr std::string_view DROP_PENDING_OF_SHARED = TARN_DROP_PENDING TARN_OF_SHARED_TYPES;
#undef TARN_DROP_PENDING
#undef TARN_OF_SHARED_TYPES
#undef TARN_OF_TYPE

/// Confirms a row with another user value. Parameters: user value, name, group, component,
/// identifier.
inline constexpr std::string_view CONFIRM_PART =
    "UPDATE Config SET UserValue = ?, DesiredValue = NULL, Success = 1 WHERE Name = ? AND "
    "ConfigGroup = ? AND Component = ? AND Identifier = ?";

}  // namespace TarnConfigStore
