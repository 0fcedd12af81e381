// What is wrong with the content of the store, and what a repair does about it: one plan for both.
#pragma once

#include "platform/db_store.h"

#include "admin/shipped_objects.h"
#include "doctor/known_types.h"
#include "doctor/row_plan.h"

#include <string>
#include <vector>

namespace TarnConfigStore {

class StorePlan {
 public:
  /// Reads everything. What cannot be read is a finding; nothing is written.
  StorePlan(const KnownTypes& types, const DBStore::ConnectionHandle& connection);

  const MendPlan& Content() const { return plan_; }
  bool Changes() const { return !rows_.empty() || !staged_.empty() || !defaults_.empty(); }

  /// Does what it says, as part of the caller's transaction. Raises ConfigStoreException 2000.
  void Carry(const DBStore::ConnectionHandle& connection) const;

 private:
  struct Defaults {
    ConfigStoreObjectId type;
    std::string version;
    std::vector<DefaultRow> rows;
  };

  void PlanRows();
  void PlanStoredRow(const ConfigStoreObjectId& id, const SchemaHandle& type, StoredRow row);
  void PlanStaged();
  void PlanStagedChange(const RowMap& change, bool mayChange);
  void PlanDefaults();
  bool IsStored(const ConfigStoreObjectId& id, bool wholeType) const;
  template <class Steps>
  void Try(const char* table, const Steps& steps);

  const KnownTypes& types_;
  const DBStore::ConnectionHandle& connection_;
  MendPlan plan_;
  std::vector<std::pair<ConfigStoreObjectId, StoredRow>> rows_;
  std::vector<ConfigStoreObjectId> staged_;
  std::vector<Defaults> defaults_;
};

}  // namespace TarnConfigStore
