// What the files of the floor's store share.
#pragma once

#include "floor_store.h"

namespace Benchmarks {

/// BEGIN IMMEDIATE; what is not committed is rolled back.
class FloorStore::Transaction {
 public:
  explicit Transaction(FloorStore& store) : store_(store) { store_.begin_.Execute(); }
  ~Transaction() {
    if (store_.database_.IsInTransaction()) {
      store_.database_.Run("ROLLBACK");
    }
  }
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;
  void Commit() { store_.commit_.Execute(); }

 private:
  FloorStore& store_;
};

/// Where the library's two statements have what; -1 for what a statement does not read.
struct FloorStore::Columns {
  int identifier;
  int version;
  int user;
  int desired;
  int automatic;
  int vital;
  int cached;
  int success;
  int creationTime;
  int modifiedTime;
  int revision;
};

}  // namespace Benchmarks
