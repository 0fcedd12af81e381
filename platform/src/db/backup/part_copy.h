// Putting a database into a backup.
#pragma once

#include "db/backup/backup_file.h"

#include <cstdint>
#include <string>

struct sqlite3;

namespace DBStore::internal {

/// Copies a database, as it is at its moment, to an offset of the file, and notes it in the part.
/// Raises std::runtime_error, reported.
/// \param fromPath  where it lies
void CopyIntoBackup(sqlite3* from, const std::string& fromPath, BackupPart& part,
                    std::int64_t begin, const BackupFile& backup);

/// Where the store goes once the schema store is in the file.
std::int64_t BehindSchemaStore(const BackupFile& backup) noexcept;

}  // namespace DBStore::internal
