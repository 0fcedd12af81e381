#include "db/layout.h"

#include "platform/host_paths.h"

namespace DBStore::internal {
namespace {

// The values lie in rows of their own and the key in an index: in a tree that is ordered by the key
// itself (WITHOUT ROWID), comparing two keys reads the whole of a large row, and everybody whose
// search passes by pays for it.
//
// REPLACE turns a NULL into a column's default where NULL is not allowed. A row that is written
// anew takes the default time of modification, an updated one the trigger's. The trigger's condition
// keeps it from answering its own update, and from running when no value changes or the time to the
// second would stay the same.
//
// StagedBase has what the row of a staged change held when the change was staged, whoever staged it:
// HadRow is 0 where there was none. A change that is staged already keeps what it has, also when
// its record is replaced: REPLACE runs no trigger for the record that goes, and before it goes it
// is still there to be seen. A record that lost its base is better off without than with a later one.
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
);

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
);

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
);

CREATE TABLE StagedBase(
  Component TEXT NOT NULL,
  ConfigGroup TEXT NOT NULL,
  Name TEXT NOT NULL,
  Identifier TEXT NOT NULL,
  HadRow INTEGER NOT NULL,
  Version TEXT,
  UserValue TEXT,
  DesiredValue TEXT,
  AutoConfValue TEXT,
  VitalValue TEXT,
  CachedValue TEXT,
  Success INTEGER,
  CreationTime TEXT,
  ModifiedTime TEXT,
  Revision INTEGER,
  PRIMARY KEY(Component, ConfigGroup, Name, Identifier)
);

CREATE TRIGGER ChangeStaged BEFORE INSERT ON DesiredUserConfig
WHEN NOT EXISTS (SELECT 1 FROM DesiredUserConfig
  WHERE Component = NEW.Component AND ConfigGroup = NEW.ConfigGroup AND Name = NEW.Name
    AND Identifier = NEW.Identifier)
BEGIN
  INSERT OR REPLACE INTO StagedBase
  SELECT NEW.Component, NEW.ConfigGroup, NEW.Name, NEW.Identifier, c.Component IS NOT NULL,
    c.Version, c.UserValue, c.DesiredValue, c.AutoConfValue, c.VitalValue, c.CachedValue,
    c.Success, c.CreationTime, c.ModifiedTime, c.Revision
  FROM (SELECT 1) LEFT JOIN Config c ON c.Component = NEW.Component
    AND c.ConfigGroup = NEW.ConfigGroup AND c.Name = NEW.Name AND c.Identifier = NEW.Identifier;
END;

CREATE TRIGGER ChangeUnstaged AFTER DELETE ON DesiredUserConfig
BEGIN
  DELETE FROM StagedBase WHERE Component = OLD.Component AND ConfigGroup = OLD.ConfigGroup
    AND Name = OLD.Name AND Identifier = OLD.Identifier;
END;

CREATE TRIGGER ChangeMoved AFTER UPDATE OF Component, ConfigGroup, Name, Identifier
ON DesiredUserConfig
WHEN (OLD.Component, OLD.ConfigGroup, OLD.Name, OLD.Identifier)
  IS NOT (NEW.Component, NEW.ConfigGroup, NEW.Name, NEW.Identifier)
BEGIN
  DELETE FROM StagedBase WHERE Component = OLD.Component AND ConfigGroup = OLD.ConfigGroup
    AND Name = OLD.Name AND Identifier = OLD.Identifier;
  DELETE FROM StagedBase WHERE Component = NEW.Component AND ConfigGroup = NEW.ConfigGroup
    AND Name = NEW.Name AND Identifier = NEW.Identifier;
END;

CREATE TABLE KeyValue(
  Key TEXT NOT NULL PRIMARY KEY,
  Value TEXT NOT NULL
) WITHOUT ROWID;
)sql";

// The first libraries with layout 1 dated a row anew whatever was updated in it.
constexpr const char* kCurrentStoreFormer = R"sql(
CREATE TRIGGER ConfigModified AFTER UPDATE OF
  Version, UserValue, DesiredValue, AutoConfValue, VitalValue, CachedValue, Success, CreationTime, Revision
ON Config
WHEN NEW.ModifiedTime IS OLD.ModifiedTime
  AND NEW.ModifiedTime IS NOT DATETIME(CURRENT_TIMESTAMP)
BEGIN
  UPDATE Config SET ModifiedTime = DATETIME(CURRENT_TIMESTAMP)
  WHERE Component = NEW.Component AND ConfigGroup = NEW.ConfigGroup AND Name = NEW.Name
    AND Identifier = NEW.Identifier;
END;
)sql";

using enum Part::Kind;

constexpr Part kCurrentStoreParts[] = {
    {"Config", TABLE},
    {"ConfigModified", TRIGGER},
    {"DefaultConfig", TABLE},
    {"DesiredUserConfig", TABLE},
    {"StagedBase", TABLE, 2},
    {"ChangeStaged", TRIGGER, 2},
    {"ChangeUnstaged", TRIGGER, 2},
    {"ChangeMoved", TRIGGER, 2},
    {"KeyValue", TABLE},
};

#define TARN_KEY "Component, ConfigGroup, Name, Identifier, Version, "
#define TARN_COPY(table, columns)                                            \
  "INSERT INTO " table "(" columns ") SELECT " columns " FROM Layout1" table \
  "; DROP TABLE Layout1" table

// Layout 1 had the same tables but StagedBase, three of them WITHOUT ROWID. They are read in the
// order of their keys, and so the rows then lie. What was staged before has no base.
constexpr UpgradeStep kCurrentStoreUpgrade[] = {
    {"moving the old tables aside",
     // Names in other programs' views and triggers go on meaning these tables.
     "PRAGMA legacy_alter_table=ON; DROP TRIGGER IF EXISTS ConfigModified;"
     "ALTER TABLE Config RENAME TO Layout1Config;"
     "ALTER TABLE DefaultConfig RENAME TO Layout1DefaultConfig;"
     "ALTER TABLE DesiredUserConfig RENAME TO Layout1DesiredUserConfig;"
     "ALTER TABLE KeyValue RENAME TO Layout1KeyValue"},
    {"making the new tables", kCurrentStoreDefinition},
    {"copying Config", TARN_COPY("Config", TARN_KEY
                                 "UserValue, DesiredValue, AutoConfValue, VitalValue, CachedValue, "
                                 "Success, CreationTime, ModifiedTime, Revision")},
    {"copying DefaultConfig",
     TARN_COPY("DefaultConfig", TARN_KEY "Value, VitalValue, CachedValue")},
    {"copying DesiredUserConfig",
     TARN_COPY("DesiredUserConfig", TARN_KEY "Value, VitalValue, CachedValue, BootAction")},
    {"copying KeyValue", TARN_COPY("KeyValue", "Key, Value")},
};

#undef TARN_COPY
#undef TARN_KEY

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

constexpr Part kSchemaStoreParts[] = {
    {"Types", TABLE},         {"Generation", TABLE},    {"TypeInstalled", TRIGGER},
    {"TypeChanged", TRIGGER}, {"TypeRemoved", TRIGGER}, {"SmartnicSchema", VIEW},
};

// A write-ahead log lets a key/value entry be read while this thread writes on another connection.
constexpr Layout kCurrentStore{.fixedPath = HostPaths::kStore,
                               .applicationId = 0x54435331,
                               .version = 2,
                               .oldest = 1,
                               .journalMode = "wal",
                               .definition = kCurrentStoreDefinition,
                               .former = kCurrentStoreFormer,
                               .parts = kCurrentStoreParts,
                               .upgrade = kCurrentStoreUpgrade};

// The types are read far more often than written, also by users who may write nothing: a rollback
// journal asks them for nothing but the right to read the file. Their documents lie in the key's own
// tree: each is looked up once in a process, and none is large enough to be felt.
constexpr Layout kSchemaStore{.fixedPath = HostPaths::kSchemaStore,
                              .applicationId = 0x54535331,
                              .version = 1,
                              .oldest = 1,
                              .journalMode = "delete",
                              .definition = kSchemaStoreDefinition,
                              .former = "",
                              .parts = kSchemaStoreParts,
                              .upgrade = {}};

}  // namespace

const Layout& CurrentStoreLayout() noexcept {
  return kCurrentStore;
}
const Layout& SchemaStoreLayout() noexcept {
  return kSchemaStore;
}

}  // namespace DBStore::internal
