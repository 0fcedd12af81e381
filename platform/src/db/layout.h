// The databases of the embedded platform and what they hold. The only place with definitions of
// tables.
#pragma once

#include <span>

namespace DBStore::internal {

/// Something that a layout makes.
struct Part {
  enum class Kind { TABLE, VIEW, TRIGGER };

  const char* name;
  Kind kind;
  int since = 1;  ///< the layout that brought it
};

/// One step on the way from a layout to the next: what it does, for messages, and its SQL.
struct UpgradeStep {
  const char* what;
  const char* sql;
};

struct Layout {
  const char* fixedPath;    ///< as in host_paths.h
  int applicationId;        ///< marks the file as ours
  int version;              ///< user_version of what is made; files with a greater one are refused
  int oldest;               ///< the least version that is read and written
  const char* journalMode;  ///< as SQLite spells it
  const char* definition;   ///< SQL that makes everything in an empty database
  const char* former;       ///< what earlier libraries declared in other words
  std::span<const Part> parts;
  std::span<const UpgradeStep>
      upgrade;  ///< from `oldest` to `version`, in one transaction in which
                ///< no trigger runs
};

/// Config, DefaultConfig, DesiredUserConfig, StagedBase and KeyValue. Since layout 2 the values of a
/// row cost nobody but those who read them; before, there was no StagedBase.
const Layout& CurrentStoreLayout() noexcept;

/// Types(Component, ConfigGroup, Name, Version, ValueType, Document), the view SmartnicSchema of
/// the types shared with a SmartNIC, and Generation: its one row's Value grows with each change of
/// a type.
const Layout& SchemaStoreLayout() noexcept;

}  // namespace DBStore::internal
