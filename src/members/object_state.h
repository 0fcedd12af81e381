// All that the store holds of one object, at one moment.
#pragma once

#include "tarnconfigstore/explain.h"

#include "objects/handles.h"
#include "persistence/type_rows.h"

#include <optional>
#include <string>
#include <vector>

namespace TarnConfigStore {

/// One part as it is read, or not.
struct HeldPart {
  ConfigPart part;
  PartRole role;        ///< READ or WAITS; HIDDEN where no reader sees any of it
  ObjectHandle object;  ///< its data, without generated ids
};

struct ObjectState {
  std::optional<StoredRow> row;  ///< nothing where no value is stored
  std::string modifiedTime;
  /// Those that have data; those that hide others come first.
  std::vector<HeldPart> parts;
  ObjectHandle read;  ///< what Get reads; may be empty
  /// Something waits for the next boot; what it makes of the object, which may be empty.
  bool waits = false;
  bool goes = false;  ///< the boot leaves no row
  ObjectHandle afterBoot;
  std::vector<ErrorInfo> misfits;  ///< of what is staged
};

/// Reads it, on a connection of its own. Raises as ExplainObject says.
ObjectState ReadState(const ConfigStoreObjectId& id, const SchemaHandle& type);

}  // namespace TarnConfigStore
