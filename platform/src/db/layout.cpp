#include "db/layout.h"

#include "platform/host_paths.h"

namespace DBStore::internal {
namespace {

// Every read names a prefix of the key, so rows lie in the key's own tree: rows are replaced all
// the time, which scatters a table that is ordered by row ids.
//
// REPLACE turns a NULL into a column's default where NULL is not allowed. Writers never name
// ModifiedTime: a replaced row takes the default, an updated one the trigger. The trigger's
// condition keeps it from answering its own update, and from running when no value changes or the
// time to the second would stay the same.
constexpr const char* kCurrentStoreDefinition = R"sql(
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
)sql";

// SQLite's own data version only tells something to a connection that is kept open, and none is
// kept to the types: the generation lets the next reader see that they changed.
constexpr const char* kSchemaStoreDefinition = R"sql(
CREATE TABLE Types(
  Component TEXT NOT NULL,
  ConfigGroup TEXT NOT NULL,
  Name TEXT NOT NULL,
  Version TEXT NOT NULL,
  ValueType TEXT NOT NULL,
  Document TEXT NOT NULL,
  PRIMARY KEY(Component, ConfigGroup, Name)
) WITHOUT ROWID;

CREATE TABLE Generation(
  Id INTEGER PRIMARY KEY CHECK(Id = 1),
  Value INTEGER NOT NULL
);
INSERT INTO Generation(Id, Value) VALUES(1, 1);

CREATE TRIGGER TypeInstalled AFTER INSERT ON Types
BEGIN UPDATE Generation SET Value = Value + 1; END;
CREATE TRIGGER TypeChanged AFTER UPDATE ON Types
BEGIN UPDATE Generation SET Value = Value + 1; END;
CREATE TRIGGER TypeRemoved AFTER DELETE ON Types
BEGIN UPDATE Generation SET Value = Value + 1; END;

CREATE VIEW SmartnicSchema(Component, ConfigGroup, Name, ValueType) AS
  SELECT Component, ConfigGroup, Name, ValueType FROM Types WHERE ValueType = 'tarn-shared';
)sql";

// A write-ahead log lets a key/value entry be read while this thread writes on another connection.
// The types are read far more often than written, also by users who may write nothing: a rollback
// journal asks them for nothing but the right to read the file.
constexpr Layout kCurrentStore{HostPaths::kStore, 0x54435331, 1, "wal", kCurrentStoreDefinition};
constexpr Layout kSchemaStore{HostPaths::kSchemaStore, 0x54535331, 1, "delete",
                              kSchemaStoreDefinition};

}  // namespace

const Layout& CurrentStoreLayout() noexcept {
  return kCurrentStore;
}
const Layout& SchemaStoreLayout() noexcept {
  return kSchemaStore;
}

}  // namespace DBStore::internal
