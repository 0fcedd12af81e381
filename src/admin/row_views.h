// The objects that readers make of a stored row.
#pragma once

#include "tarnconfigstore/type_administration.h"

#include "persistence/row_objects.h"
#include "persistence/type_rows.h"

#include <optional>
#include <string>
#include <vector>

namespace TarnConfigStore {

/// A way to read a row, now or once what waits in it is confirmed or dropped.
struct RowView {
  DataPlace place;
  RowText user;  ///< what counts as the user's value; null where nothing does
};

/// All of them, the current one first: the user's value is the confirmed one, and, for whoever reads
/// during an upgrade or after the boot, the unconfirmed or the pending one.
std::vector<RowView> ViewsOf(const StoredRow& row);

/// What a view shows: automatic, cached, vital and user's value, each laid over those before it;
/// empty where there is none of them. Raises InvalidArgumentException 1080 for a text that is not
/// JSON.
ObjectHandle MergeView(const StoredRow& row, RowText user, const ConfigStoreObjectId& id,
                       const SchemaHandle& type);

/// The same without the automatic value.
ObjectHandle MergeSetView(const StoredRow& row, RowText user, const ConfigStoreObjectId& id,
                          const SchemaHandle& type);

}  // namespace TarnConfigStore
