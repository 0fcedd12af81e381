// SQL of the platform's own on what the store has beside the library's tables.
#pragma once

#include <string_view>

namespace DBStore::internal::Sql {

/// Parameters: key and, of the second, value.
inline constexpr std::string_view kReadKeyValue = "SELECT Value FROM KeyValue WHERE Key = ?1";
inline constexpr std::string_view kWriteKeyValue =
    "INSERT INTO KeyValue(Key, Value) VALUES(?1, ?2) "
    "ON CONFLICT(Key) DO UPDATE SET Value = excluded.Value";

/// Reads the few rows that tell of all tables.
inline constexpr std::string_view kFindStagedBases =
    "SELECT 1 FROM sqlite_schema WHERE type = 'table' AND name = 'StagedBase'";

/// Parameters: component, group, name, identifier. A base without its record is nobody's.
inline constexpr std::string_view kReadStagedBase =
    "SELECT HadRow, b.Version, UserValue, DesiredValue, AutoConfValue, b.VitalValue, "
    "b.CachedValue, "
    "Success, CreationTime, ModifiedTime, Revision FROM StagedBase b JOIN DesiredUserConfig USING "
    "(Component, ConfigGroup, Name, Identifier) WHERE Component = ?1 AND ConfigGroup = ?2 AND Name "
    "= ?3 AND Identifier = ?4";

}  // namespace DBStore::internal::Sql
