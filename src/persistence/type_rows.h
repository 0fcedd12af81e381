// What the store's tables hold about a type as a whole: the objects that came with it, its stored
// rows, and the changes that are staged.
#pragma once

#include "tarnconfigstore/object_id.h"

#include "platform/db_store.h"

#include "objects/division.h"
#include "persistence/row_map.h"

#include <array>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace TarnConfigStore {

/// A row of DefaultConfig; the automatic value is not used.
struct DefaultRow {
  std::string instanceId;
  ColumnValues values;
};

/// Makes the rows the type's only ones in DefaultConfig; when they are that already, writes
/// nothing. Raises ConfigStoreException 2000 "Write default config failed for: IDENTIFIER"; the
/// caller's transaction undoes what was written by then.
/// \param type  an identifier without instance id
void ReplaceDefaultRows(const ConfigStoreObjectId& type, const std::string& version,
                        const std::vector<DefaultRow>& rows,
                        const DBStore::ConnectionHandle& connection);

/// Whether they are that already. Raises ConfigStoreException 2000 "Read Instances failed for:
/// IDENTIFIER".
bool AreDefaultRows(const ConfigStoreObjectId& type, const std::string& version,
                    std::vector<DefaultRow> rows, const DBStore::ConnectionHandle& connection);

/// Hands on the types, as identifiers without instance id, that have rows in DefaultConfig; of
/// Config, with and without values; both sorted. Raise ConfigStoreException 2000 "Get store rows failed.".
using TypeVisitor = std::function<void(const ConfigStoreObjectId&)>;
void ForEachTypeWithDefaults(const DBStore::ConnectionHandle& connection, const TypeVisitor& visit);
void ForEachStoredType(const DBStore::ConnectionHandle& connection, const TypeVisitor& visit);

/// How many instances of a type have a value of any kind in Config. Raises ConfigStoreException
/// 2000 "Read Instances failed for: IDENTIFIER".
int CountStoredInstances(const ConfigStoreObjectId& type,
                         const DBStore::ConnectionHandle& connection);

/// A row of Config with its values, as far as its type has a say in them.
struct StoredRow : ColumnValues {
  std::optional<std::string> pending;
  std::string instanceId;
  std::string version;
  std::string creationTime;
  int revision = 0;
  bool confirmed = true;
};

/// One of the texts of a row.
using RowText = std::optional<std::string> StoredRow::*;

struct ValueColumn {
  const char* name;
  RowText text;
};

/// The columns that hold values, each laid over those before it where a row is read whole.
inline constexpr std::array<ValueColumn, 5> kValueColumns = {
    {{"AutoConfValue", &StoredRow::automatic},
     {"CachedValue", &StoredRow::cached},
     {"VitalValue", &StoredRow::vital},
     {"UserValue", &StoredRow::user},
     {"DesiredValue", &StoredRow::pending}}};

/// Hands on each row of a type that holds a value, in the order of the instance ids. Answers how many
/// there are that hold none. Raises as CountStoredInstances.
std::size_t ForEachStoredRow(const ConfigStoreObjectId& type,
                             const DBStore::ConnectionHandle& connection,
                             const std::function<void(const StoredRow&)>& receiver);

/// What there is of a row before it is copied. Valid during the call.
struct RowTexts {
  std::string_view instanceId;
  std::optional<std::string_view> user;
  bool confirmed = true;
};

/// The same of the rows that are wanted, each of which the receiver may take. All are asked about.
std::size_t TakeStoredRows(const ConfigStoreObjectId& type,
                           const DBStore::ConnectionHandle& connection,
                           const std::function<bool(const RowTexts&)>& wants,
                           const std::function<void(StoredRow&&)>& receiver);

/// The same for one row, where it is there and holds a value. Raises ConfigStoreException 2000 "Get
/// failed: IDENTIFIER".
void VisitStoredRow(const ConfigStoreObjectId& id, const DBStore::ConnectionHandle& connection,
                    const std::function<void(const StoredRow&)>& receiver);

/// Writes all values and the version of a row that is there, which does not count as a write of the
/// object: everything else of the row stays. Raises ConfigStoreException 2000 "Dividing stored values
/// again failed for: IDENTIFIER".
void RedivideRow(const ConfigStoreObjectId& type, const StoredRow& row,
                 const DBStore::ConnectionHandle& connection);

/// The changes that are staged of a type, deletions among them, as ForEachStagedChange gives all of
/// them. Raises as CountStoredInstances.
RowMapList ReadStagedOfType(const ConfigStoreObjectId& type,
                            const DBStore::ConnectionHandle& connection);

}  // namespace TarnConfigStore
