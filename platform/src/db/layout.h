// The databases of the embedded platform and what they hold. The only place with definitions of
// tables.
#pragma once

namespace DBStore::internal {

struct Layout {
  const char* fixedPath;    ///< as in host_paths.h
  int applicationId;        ///< marks the file as ours
  int version;              ///< user_version; files with a greater one are refused
  const char* journalMode;  ///< as SQLite spells it
  const char* definition;   ///< SQL that makes everything in an empty database
};

/// Config, DefaultConfig, DesiredUserConfig and KeyValue.
const Layout& CurrentStoreLayout() noexcept;

/// Types(Component, ConfigGroup, Name, Version, ValueType, Document), the view SmartnicSchema of
/// the types shared with a SmartNIC, and Generation: its one row's Value grows with each change of
/// a type.
const Layout& SchemaStoreLayout() noexcept;

}  // namespace DBStore::internal
