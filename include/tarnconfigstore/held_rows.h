// Rows that stores hold.
#pragma once

#include "tarnconfigstore/export.h"

namespace TarnConfigStore {

/// Says whether stores may hold what they read. A store that reads an object which did not change
/// since it was last read may then answer from memory, after it has asked the database whether
/// anything at all was written since, by whomever. Callers notice nothing but the time: each gets an
/// object of its own, as current as one that was read anew. Nothing is held within a transaction, nor
/// by a child for its parent. What one store holds is at most half a megabyte, and goes with the store.
///
/// In force for the whole process, which holds rows until it is told otherwise. A store drops what it
/// held at its next read. Thread-safe. Throws nothing.
TARN_CONFIG_STORE_EXPORT void SetRowHolding(bool hold) noexcept;

}  // namespace TarnConfigStore
