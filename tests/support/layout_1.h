// Stores as an older library made them.
#pragma once

#include <sqlite3.h>

#include <stdexcept>
#include <string>

namespace TestSupport {

inline constexpr const char* kLayout1 = R"sql(
PRAGMA writable_schema=ON; DELETE FROM sqlite_schema; PRAGMA writable_schema=OFF; VACUUM;
BEGIN;
CREATE TABLE Config(
  Component TEXT NOT NULL,
  ConfigGroup TEXT NOT NULL,
  Name TEXT NOT NULL,
  Identifier TEXT NOT NULL,
  Version TEXT NOT NULL,
  UserValue TEXT,
  DesiredValue TEXT,
  AutoConfValue TEXT,
  VitalValue TEXT,
  CachedValue TEXT,
  Success INTEGER NOT NULL DEFAULT 1,
  CreationTime TEXT NOT NULL DEFAULT CURRENT_TIMESTAMP,
  ModifiedTime TEXT NOT NULL DEFAULT CURRENT_TIMESTAMP,
  Revision INTEGER NOT NULL DEFAULT 1,
  PRIMARY KEY(Component, ConfigGroup, Name, Identifier)
) WITHOUT ROWID;

CREATE TRIGGER ConfigModified AFTER UPDATE OF
  UserValue, DesiredValue, AutoConfValue, VitalValue, CachedValue
ON Config
WHEN NEW.ModifiedTime IS OLD.ModifiedTime
  AND NEW.ModifiedTime IS NOT DATETIME(CURRENT_TIMESTAMP)
  AND (NEW.UserValue IS NOT OLD.UserValue OR NEW.DesiredValue IS NOT OLD.DesiredValue
    OR NEW.AutoConfValue IS NOT OLD.AutoConfValue OR NEW.VitalValue IS NOT OLD.VitalValue
    OR NEW.CachedValue IS NOT OLD.CachedValue)
BEGIN
  UPDATE Config SET ModifiedTime = DATETIME(CURRENT_TIMESTAMP)
  WHERE Component = NEW.Component AND ConfigGroup = NEW.ConfigGroup AND Name = NEW.Name
    AND Identifier = NEW.Identifier;
END;

CREATE TABLE DefaultConfig(
  Component TEXT NOT NULL,
  ConfigGroup TEXT NOT NULL,
  Name TEXT NOT NULL,
  Identifier TEXT NOT NULL,
  Version TEXT NOT NULL,
  Value TEXT,
  VitalValue TEXT,
  CachedValue TEXT,
  PRIMARY KEY(Component, ConfigGroup, Name, Identifier)
) WITHOUT ROWID;

CREATE TABLE DesiredUserConfig(
  Component TEXT NOT NULL,
  ConfigGroup TEXT NOT NULL,
  Name TEXT NOT NULL,
  Identifier TEXT NOT NULL,
  Version TEXT NOT NULL,
  Value TEXT,
  VitalValue TEXT,
  CachedValue TEXT,
  BootAction TEXT NOT NULL CHECK(BootAction IN ('SET', 'DELETE', 'DELETE_INSTANCE')),
  PRIMARY KEY(Component, ConfigGroup, Name, Identifier)
) WITHOUT ROWID;

CREATE TABLE KeyValue(
  Key TEXT NOT NULL PRIMARY KEY,
  Value TEXT NOT NULL
) WITHOUT ROWID;

PRAGMA user_version=1;
COMMIT;
)sql";

/// Makes a store that nobody has open one of layout 1, empty.
inline void MakeLayout1(const std::string& store) {
  sqlite3* database = nullptr;
  sqlite3_open_v2(store.c_str(), &database, SQLITE_OPEN_READWRITE, nullptr);
  int keep = 1;
  sqlite3_file_control(database, "main", SQLITE_FCNTL_PERSIST_WAL, &keep);
  const int code = sqlite3_exec(database, kLayout1, nullptr, nullptr, nullptr);
  const std::string message = sqlite3_errmsg(database);
  sqlite3_close(database);
  if (code != SQLITE_OK) {
    throw std::runtime_error("a store of layout 1: " + message);
  }
}

}  // namespace TestSupport
