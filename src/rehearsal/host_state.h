// All that a host's store holds, to be compared.
#pragma once

#include "tarnconfigstore/pending.h"

#include "platform/type_files.h"

#include "documents/reference_drift.h"
#include "persistence/type_rows.h"

#include <map>
#include <string>
#include <vector>

namespace TarnConfigStore {

using RowsById = std::map<ConfigStoreObjectId, StoredRow, InOrderOfIds>;

struct HostState {
  RowsById rows;
  std::vector<PendingChange> waiting;  ///< secrets as they are
  std::vector<PendingChange> masked;   ///< the same, as it may be shown
  std::map<TarnSchemaStore::TypeName, TypeFiles::KeptType> types;
  std::map<std::string, std::string> entries;
};

/// Reads what is under the host root; nothing where the store or the types are missing. Raises
/// ConfigStoreException 2000 when it cannot be read.
HostState ReadHostState();

}  // namespace TarnConfigStore
