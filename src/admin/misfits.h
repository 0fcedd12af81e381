// Stored objects that a type, as a file describes it, does not allow.
#pragma once

#include "tarnconfigstore/type_administration.h"

#include "platform/db_store.h"
#include "platform/type_files.h"

namespace TarnConfigStore {

/// Validates the stored objects of a type against the file that is to become it, and adds what no
/// longer fits to the report, which becomes INVALID over it unless that is forced.
void JudgeStoredObjects(const TypeFiles::TypeFile& file,
                        const DBStore::ConnectionHandle& connection, bool force,
                        TypeReport& report);

}  // namespace TarnConfigStore
