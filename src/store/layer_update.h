// What an update makes of the values of a row.
#pragma once

#include "tarnconfigstore/contexts.h"

#include "objects/division.h"
#include "persistence/row_objects.h"
#include "store/removals.h"

#include <optional>

namespace TarnConfigStore {

/// Validates what an update is given, and takes its nulls out of it. Raises ValidationException 1090.
void ValidateChange(const ObjectHandle& object, const Removals& removals,
                    const SchemaHandle& schema);

/// The change, divided among the parts, to be laid over the values of a row.
class LayerUpdate {
 public:
  /// All of these have to outlive it.
  /// \param object    has been validated; its data stay as they are
  /// \param removals  what it takes away
  LayerUpdate(const ObjectHandle& object, const Removals& removals, const SchemaHandle& schema,
              const USERDATA_CONTEXT& context);

  /// The values that come out. Raises ValidationException 1090 where they do not fit, or still hold
  /// what is to go.
  /// \param row            the row, or an empty one
  /// \param duringUpgrade  what waits in the row is what the user's change is laid over
  ColumnValues Over(const RowMap& row, bool duringUpgrade) const;

 private:
  const ConfigStoreObjectId& id_;
  const Removals& removals_;
  const SchemaHandle& schema_;
  const bool byUser_;
  std::optional<DividedValue> changes_;
};

}  // namespace TarnConfigStore
