// Telling whether two identifiers name objects of one type.
#pragma once

#include "tarnconfigstore/object_id.h"

namespace TarnConfigStore {

/// Key, component and group are the same; instance ids do not matter.
inline bool IsSameType(const ConfigStoreObjectId& a, const ConfigStoreObjectId& b) {
  return a.key == b.key && a.component == b.component && a.group == b.group;
}

}  // namespace TarnConfigStore
