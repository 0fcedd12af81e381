// What a document makes of a store.
#pragma once

#include "tarnconfigstore/documents.h"

#include "platform/db_store.h"

#include "documents/config_document.h"
#include "documents/object_plan.h"
#include "persistence/type_rows.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace TarnConfigStore {

/// Works out what a document makes of a store, and does it. One use: Judge, then Work in what sees one
/// moment of the store, then perhaps Write in the same transaction.
class DocumentPlan {
 public:
  enum class Step { WRITE, REMOVE, STAGE, STAGE_REMOVAL };
  struct PlannedStep {
    Step step;
    ConfigStoreObjectId id;
    SchemaHandle schema;                      ///< empty when the type is not installed
    std::shared_ptr<const StoredRow> before;  ///< empty where there is no row
    StoredRow row = {};                       ///< to be written or staged
    RowInfo info = {};                        ///< of a new row
    bool clearsFirst = false;                 ///< before it, all rows of its type go
  };
  /// A change that is to be staged, or one that is to be taken back.
  struct PlannedRecord {
    ConfigStoreObjectId id;
    const NamedChange* change;  ///< null for one that goes
    std::shared_ptr<RowMap> before;
    std::string version = {};
    ColumnValues values = {};
  };

  /// \param document  has to outlive it
  DocumentPlan(const ConfigDocument& document, const DocumentMode& mode);

  /// Checks what can be checked without the store.
  void Judge();
  /// Works out what becomes of each row.
  void Work(const DBStore::ConnectionHandle& connection);
  /// Raises what the writes of the store and of the next boot raise while the host boots, is upgraded or
  /// remediated.
  void RequireAllowed(const DBStore::ConnectionHandle& connection) const;
  /// Writes what was worked out. Nothing may have been refused.
  void Write(const DBStore::ConnectionHandle& connection) const;

  const DocumentReport& Report() const { return report_; }
  DocumentReport TakeReport() noexcept { return std::move(report_); }
  const std::vector<PlannedStep>& Steps() const { return steps_; }
  const std::vector<PlannedRecord>& Records() const { return records_; }
  /// Every finding there is, of the document and of its objects.
  std::vector<ErrorInfo> Findings() const;
  /// What has to be announced once it is written.
  std::vector<ConfigStoreObjectId> Changed() const;

 private:
  using Row = std::shared_ptr<const StoredRow>;
  // The rows of a type, but for those that stay as they are.
  struct Rows {
    std::vector<Row> ofObjects;  // empty for an object that has none
    std::vector<Row> others;     // what the document does not name; only those that may have to go
    std::size_t count = 0;       // of all that hold something
    bool isWholeType = false;    // there are no others
  };
  using Staged = std::unordered_map<std::string, std::shared_ptr<RowMap>>;

  Rows ReadRows(const NamedType& type, std::vector<ObjectPlan>& plans,
                const DBStore::ConnectionHandle& connection) const;
  Staged ReadStaged(const NamedType& type, const DBStore::ConnectionHandle& connection) const;
  bool Stages(const NamedType& type) const;
  void WorkOnType(const NamedType& type, std::vector<ObjectPlan>& plans,
                  const DBStore::ConnectionHandle& connection);
  void Decide(const NamedType& type, const NamedObject& object, const ObjectPlan& plan,
              const Row& stored, StoredRow after, const Staged& staged);
  void ClearFirst(std::size_t firstStep, const Rows& rows);
  void Prune(const NamedType& type, Rows& rows, const Staged& staged);
  void RemoveOthers(const DBStore::ConnectionHandle& connection);
  void WorkOnRecords(const DBStore::ConnectionHandle& connection);
  void WorkOnRecord(const NamedChange& change, const std::shared_ptr<RowMap>& stored,
                    const SchemaHandle& type);
  bool StagesAnything() const;

  void Say(const ConfigStoreObjectId& id, ObjectOutcome outcome,
           std::vector<ErrorInfo> findings = {}) {
    report_.objects.push_back({id, outcome, std::move(findings)});
  }

  const ConfigDocument& document_;
  const DocumentMode mode_;
  int upgradeContext_ = 0;
  std::vector<std::vector<ObjectPlan>> plans_;  // by type
  std::vector<PlannedStep> steps_;
  std::vector<PlannedRecord> records_;
  DocumentReport report_;
};

}  // namespace TarnConfigStore
