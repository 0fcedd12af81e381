// Configuration objects from result rows.
#pragma once

#include "tarnconfigstore/config_store_object.h"

#include "platform/schema_store.h"

#include "persistence/row_map.h"

#include <memory>
#include <string>
#include <string_view>

namespace TarnConfigStore {

using ObjectHandle = std::shared_ptr<ConfigStoreObject>;
using SchemaHandle = std::shared_ptr<TarnSchemaStore::SchemaObject>;

/// The object in one value column, with the row's metadata; an empty pointer when the column is
/// NULL. Raises InvalidArgumentException 1080, after logging the row and the column, when the text
/// is not JSON.
ObjectHandle MakeObjectFromRow(const RowMap& row, std::string_view column,
                               const ConfigStoreObjectId& id, const SchemaHandle& schema);

/// An object from a text that did not come from a row; it has no metadata. Raises
/// InvalidArgumentException 1080 when the text is not JSON.
ObjectHandle MakeObject(const std::string& text, const ConfigStoreObjectId& id,
                        const SchemaHandle& schema);

/// The user's object if the row is confirmed ("Success" is "1"), else an empty pointer.
ObjectHandle MakeConfirmedUserObject(const RowMap& row, const ConfigStoreObjectId& id,
                                     const SchemaHandle& schema);

/// The user's object as the upgrade context asks for it: outside an upgrade the confirmed one,
/// during one the pending value if there is one and the user's otherwise, confirmed or not.
/// \param upgradeContext  what GetUpgradeCtx answered; asked once an operation, not once a row
ObjectHandle MakeUserObject(const RowMap& row, const ConfigStoreObjectId& id,
                            const SchemaHandle& schema, int upgradeContext);

}  // namespace TarnConfigStore
