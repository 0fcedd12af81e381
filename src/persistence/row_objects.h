// Configuration objects from result rows.
#pragma once

#include "objects/handles.h"
#include "persistence/row_map.h"

#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace TarnConfigStore {

class Arena;

/// The object in one value column, with the row's metadata; an empty pointer when the column is
/// NULL. Raises InvalidArgumentException 1080, after logging the row and the column, when the text
/// is not JSON.
ObjectHandle MakeObjectFromRow(const RowMap& row, std::string_view column,
                               const ConfigStoreObjectId& id, const SchemaHandle& schema);

/// One object of several value columns, each laid over those before it, with the row's metadata; an
/// empty pointer when all of them are NULL. A column without a name is none. Raises as
/// MakeObjectFromRow.
/// \param arena  where the object is made, unless it is null
ObjectHandle MergeColumns(const RowMap& row, std::initializer_list<std::string_view> columns,
                          const ConfigStoreObjectId& id, const SchemaHandle& schema,
                          Arena* arena = nullptr);

/// An object from a text that did not come from a row; it has no metadata. Raises
/// InvalidArgumentException 1080 when the text is not JSON.
ObjectHandle MakeObject(const std::string& text, const ConfigStoreObjectId& id,
                        const SchemaHandle& schema);

/// The same of data that are at hand.
ObjectHandle MakeObject(const std::shared_ptr<JsonDoc>& data, const ConfigStoreObjectId& id,
                        const SchemaHandle& schema);

/// The user's object if the row is confirmed ("Success" is "1"), else an empty pointer.
ObjectHandle MakeConfirmedUserObject(const RowMap& row, const ConfigStoreObjectId& id,
                                     const SchemaHandle& schema);

/// The column that MakeUserObject reads; empty where it reads none.
std::string_view UserColumn(const RowMap& row, int upgradeContext);

/// The user's object as the upgrade context asks for it: outside an upgrade the confirmed one,
/// during one the pending value if there is one and the user's otherwise, confirmed or not.
/// \param upgradeContext  what ReadUpgradeContext answered; asked once an operation, not once a row
ObjectHandle MakeUserObject(const RowMap& row, const ConfigStoreObjectId& id,
                            const SchemaHandle& schema, int upgradeContext);

/// The cached, the vital and, from the column named, the user's value of a row, merged; an empty
/// pointer when there is none of them. Raises as MakeObjectFromRow.
ObjectHandle MergeParts(const RowMap& row, std::string_view userColumn,
                        const ConfigStoreObjectId& id, const SchemaHandle& schema);

/// An object for each row of a type that `make` gives one for, which gets the row and the type's
/// identifier with the row's "Identifier" in it. Made while the rows come, so that no more than one
/// of them is held. Raises as ForEachRow.
std::vector<ObjectHandle> ObjectsOfType(
    const DBStore::ConnectionHandle& connection, std::string_view statement,
    const ConfigStoreObjectId& type,
    const std::function<ObjectHandle(const RowMap&, const ConfigStoreObjectId&)>& make);

/// A list of one object, or of none for an empty pointer.
std::vector<ObjectHandle> ListOf(ObjectHandle object);

/// The identifier in a row that has all four columns of the key.
ConfigStoreObjectId IdFromRow(const RowMap& row);

}  // namespace TarnConfigStore
