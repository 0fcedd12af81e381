// Reading current configuration.
#pragma once

#include "tarnconfigstore/contexts.h"
#include "tarnconfigstore/filter_spec_object.h"

#include "platform/db_store.h"

#include "persistence/row_objects.h"

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace TarnConfigStore {

// All of these raise ConfigStoreException 2000: "Get failed: IDENTIFIER" where one row is read,
// "Read Instances failed for: IDENTIFIER" where a type's rows are. A row that is not there is no
// error.

/// One object, all layers merged; empty when nothing is stored.
ObjectHandle GetInternal(const ConfigStoreObjectId& id, const DBStore::ConnectionHandle& connection,
                         const SchemaHandle& schema);

/// The same of a row that READ_TABLE_CONFIG gave.
ObjectHandle MakeCurrent(const RowMap& row, const ConfigStoreObjectId& id,
                         const SchemaHandle& schema);

/// What the user and automatic configuration set for one object, merged; unconfirmed user values
/// are left out.
ObjectHandle GetCurrentConfigInternal(const ConfigStoreObjectId& id,
                                      const DBStore::ConnectionHandle& connection,
                                      const SchemaHandle& schema);

/// The instances that a filter keeps, all layers merged.
std::vector<ObjectHandle> GetConfigInstancesInternal(
    const std::shared_ptr<FilterSpecObject>& filter, const DBStore::ConnectionHandle& connection,
    const SchemaHandle& schema);

/// The ids of the instances that a filter keeps, for which no objects are held.
std::vector<std::string> GetConfigInstanceIdsInternal(
    const std::shared_ptr<FilterSpecObject>& filter, const DBStore::ConnectionHandle& connection,
    const SchemaHandle& schema);

/// As GetCurrentConfigInternal, for one instance or, without an instance id, all of a type.
std::vector<ObjectHandle> GetCurrentConfigInstancesInternal(
    const ConfigStoreObjectId& id, const DBStore::ConnectionHandle& connection,
    const SchemaHandle& schema);

/// One object as a caller of a context sees it while the host boots: automatic configuration sees
/// what it set itself; a person's tools see pending values only of types that are accessible during
/// boot.
ObjectHandle GetConfigByBootAndContext(const ConfigStoreObjectId& id, const SchemaHandle& schema,
                                       const USERDATA_CONTEXT& context,
                                       const DBStore::ConnectionHandle& connection);

/// Rows that GetBulkConfigInternal made no object of, although they hold something.
struct LeftOut {
  std::vector<ConfigStoreObjectId> notInstalled;  ///< their types are not
  std::vector<ConfigStoreObjectId> unconfirmed;   ///< with nothing but an unconfirmed user value
};

/// All objects of a component, or of one group of it when the group is not empty, on a connection
/// of its own. Rows of types that are not installed are logged and left out. Raises
/// ConfigStoreException 2000 "Get all keys failed".
/// \param leftOut  gets what was left out; may be null
std::vector<ObjectHandle> GetBulkConfigInternal(const std::string& component,
                                                const std::string& group,
                                                LeftOut* leftOut = nullptr);

/// The rows of the whole store in which a value expression is not NULL, as "Value"; of confirmed
/// rows only, unless asked otherwise. The expression is one of the library's own constants. Raises
/// ConfigStoreException 2000 "Get store rows failed.".
RowMapList GetStoreContentsInternalST(std::string_view valueExpression,
                                      const DBStore::ConnectionHandle& connection,
                                      bool includeUnconfirmed);

/// The confirmed user values of the whole store.
RowMapList GetUserConfigContents(const DBStore::ConnectionHandle& connection);

/// Objects by type name and instance id.
using ConfigTypeMap = std::map<std::string, std::map<std::string, ObjectHandle>>;
void UpdateConfigTypeMap(ConfigTypeMap& map, const ObjectHandle& object);

}  // namespace TarnConfigStore
