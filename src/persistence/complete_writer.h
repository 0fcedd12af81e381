// The complete write, of one row after the other.
#pragma once

#include "platform/db_store.h"

#include "errors/raise.h"
#include "objects/division.h"
#include "persistence/binder.h"
#include "persistence/statements.h"

#include <string>

namespace TarnConfigStore {

/// Writes complete rows. What the row before had of the type stays bound: it has to live as long as
/// this. Raises ConfigStoreException 2000 "WriteComplete failed"; the row is then as it was.
class CompleteWriter {
 public:
  explicit CompleteWriter(const DBStore::ConnectionHandle& connection)
      : connection_(connection),
        statement_(DBStore::internal::Prepare(connection, WRITE_COMPLETE, DBStore::kWaitLimit)) {}

  /// Says of which type, version and state the rows are that follow.
  void SetType(const ConfigStoreObjectId& type, const std::string& version, int success) {
    isBound_ = Binder(connection_, statement_)
                   .Skip(1)
                   .Text(type.key, type.group, type.component, version)
                   .Number(success)
                   .IsBound();
  }

  void Write(const std::string& instanceId, const ColumnValues& values,
             DBStore::NullableSV creationTime, int revisionBase) const {
    constexpr int kOfType = 5;
    if (!isBound_ ||
        !Binder(connection_, statement_)
             .Text(instanceId)
             .Skip(kOfType)
             .Nullable(values.automatic, values.user, values.vital, values.cached, creationTime)
             .Number(revisionBase)
             .Execute()) {
      ThrowFailure("WriteComplete failed");
    }
  }

 private:
  const DBStore::ConnectionHandle& connection_;
  const DBStore::StatementHandle statement_;
  bool isBound_ = false;
};

}  // namespace TarnConfigStore
