// Examining the files and databases of the stores.
#include "platform/host_paths.h"
#include "platform/host_repair.h"
#include "platform/process_locks.h"
#include "platform/store_error.h"

#include "db/backup/pending_restore.h"
#include "db/doctor/database_check.h"
#include "db/doctor/file_check.h"
#include "db/open_databases.h"

#include <stdexcept>

namespace HostRepair {

using namespace DBStore::internal;

Examination Examine() {
  Examination result;
  if (OpenDatabases::AreOutOfReach()) {
    result.findings.push_back({Weight::FAULT, "out-of-reach", HostPaths::kStore, "",
                               OpenDatabases::kOutOfReach, "examine it from another process",
                               false});
    return result;
  }
  // A child that is forked while databases are open could use none of its own.
  const ProcessLocks::Guard guard(ProcessLocks::Rank::WHOLE_STORES);
  CheckFiles(result.findings);
  const bool isFree = !PendingRestore::IsBegun();
  try {
    const DatabaseState store = CheckDatabase(CurrentStoreLayout(), result.findings);
    const DatabaseState types = CheckDatabase(SchemaStoreLayout(), result.findings);
    result.canReadStore = isFree && store.isReadable;
    result.canReadTypes = isFree && types.isReadable;
    result.typesAreLost = types.isLost;
  } catch (const std::runtime_error& failure) {
    result.findings.push_back({Weight::FAULT, "not-examined", StoresDirectoryName(), "",
                               failure.what(), "try again", false});
  }
  // What was found is told; it is no failure.
  DBStore::ClearLastError();
  return result;
}

}  // namespace HostRepair
