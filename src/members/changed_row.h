// Changing one row by itself.
#pragma once

#include "tarnconfigstore/config_store.h"
#include "tarnconfigstore/parts.h"

#include "objects/handles.h"
#include "persistence/type_rows.h"

#include <functional>
#include <optional>
#include <string>

namespace TarnConfigStore {

/// A row on its way to what it is to become.
struct ChangedRow {
  const ConfigStoreObjectId& id;
  const SchemaHandle& type;
  StoredRow row;  ///< of no part where there was none; its user's part is what readers see as that
  unsigned written = 0;  ///< the parts that changed, as bits of Json::Kind; USER for automatic, too
  bool changesUser = false;
  bool replacesUser = false;  ///< nothing of the user's part is kept

  std::optional<std::string>& Text(ConfigPart part);
  /// Puts another text in the place of a part.
  void Put(ConfigPart part, std::optional<std::string> text);
  /// What is read of it now; empty where that is nothing.
  ObjectHandle Read() const;
};

enum class RowFate { LEFT, WRITTEN, REMOVED };

struct ChangeOutcome {
  RowFate fate = RowFate::LEFT;
  bool dropsPending = false;  ///< a pending value went unused
};

/// Runs in one transaction on a store's connection, or one of its own: reads the row, lets `change` work
/// out what becomes of it, and writes it where it answers true; a row without parts goes. What is pending
/// goes where the user's part changed; during an upgrade it is the user's part before. Announced after
/// the commit. Raises what `change` does, and as taking_back.h says.
/// \param store  null for a connection of its own
/// \param part   the one that is to change, where it is one alone
ChangeOutcome ChangeRow(
    ConfigStore* store, const ConfigStoreObjectId& id, const char* operation,
    std::optional<ConfigPart> part,
    const std::function<bool(ChangedRow&, const DBStore::ConnectionHandle&)>& change);

/// Changes a part that is there as `change` does with its data; what then holds nothing but its id is
/// no part any more. Answers what `change` does.
bool ChangePart(ChangedRow& row, ConfigPart part,
                const std::function<bool(ConfigStoreObjectImpl&)>& change);

}  // namespace TarnConfigStore
