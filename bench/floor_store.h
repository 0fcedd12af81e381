// The floor: what a caller would write by hand for one store, with nothing between it and SQLite,
// RapidJSON and the compiled validation. It keeps the library's promises for what the benchmarks
// hand it, in the fastest way known, and refuses the rest: changes of objects that are divided among several
// columns or wait for a boot, and what IS_BOOT or a listening daemon would ask for. It leaves out
// what only the library's interface asks for: looking types up, other namespaces, tracing,
// findings in words, several threads.
#pragma once

#include "tarnconfigstore/object_id.h"

#include "platform/json_validator.h"

#include "floor_database.h"
#include "floor_json.h"
#include "floor_object.h"
#include "json/json.h"
#include "json_schema/registration.h"
#include "samples.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace Benchmarks {

/// A type's schema, read from the schema store and parsed; compiled at the first validation.
class FloorType {
 public:
  FloorType(const std::string& root, const TarnConfigStore::ConfigStoreObjectId& id);

  const Json::Value& Schema() const { return *schema_; }
  const std::string& Version() const { return version_; }

 private:
  std::unique_ptr<FloorObject> file_;
  const Json::Value* schema_ = nullptr;
  std::string version_;
  std::unique_ptr<const Json::TypeSchemaView> view_;
  std::unique_ptr<JsonValidator::Registration> registration_;
};

/// Reads and writes objects of any type on one open connection. Raises std::runtime_error on any
/// failure. Used by one thread.
class FloorStore {
 public:
  explicit FloorStore(const std::string& root);
  FloorStore(const FloorStore&) = delete;
  FloorStore& operator=(const FloorStore&) = delete;

  /// Reads one object with all its layers; empty when there is none.
  std::unique_ptr<FloorObject> Get(const TarnConfigStore::ConfigStoreObjectId& id);

  /// Reads all instances of a type.
  std::vector<std::unique_ptr<FloorObject>> GetInstances(
      const TarnConfigStore::ConfigStoreObjectId& id);

  /// Reads the instances of a type whose member is this text. Of the others each text is read
  /// strictly, to its end, and nothing made of it.
  std::vector<std::unique_ptr<FloorObject>> GetInstancesWhere(
      const TarnConfigStore::ConfigStoreObjectId& id, std::string_view member,
      std::string_view wanted);

  /// The number of writes of an object; -1 when there is no row.
  std::int64_t GetRevision(const TarnConfigStore::ConfigStoreObjectId& id);

  /// Whether an entry holds this value.
  bool Holds(std::string_view key, std::string_view value);

  /// Validates an object of a type without vital and cached members, and replaces its row.
  void Set(const TarnConfigStore::ConfigStoreObjectId& id, Json::Value& data,
           const FloorType& type);

  /// Lays an object's members over those that are stored, validates what comes out and writes it. In the
  /// caller's transaction.
  void Update(const TarnConfigStore::ConfigStoreObjectId& id, Json::Value& change,
              const FloorType& type);

  /// How SetInstances writes: as the library has to, which reads what there is, deletes it and carries over
  /// what has to stay; or with a plain INSERT, which carries nothing over.
  enum class Rows { KEPT, NEW };

  /// Validates all objects, and replaces all instances of a type by them in one transaction; kept
  /// instances keep their creation time, and their revision goes on.
  void SetInstances(const TarnConfigStore::ConfigStoreObjectId& id,
                    const std::vector<std::unique_ptr<FloorObject>>& objects, const FloorType& type,
                    Rows rows = Rows::KEPT);

  /// Parses a document of one type, validates its instances and replaces their rows in one transaction.
  /// How many there were.
  std::size_t Import(const TarnConfigStore::ConfigStoreObjectId& id, std::string_view document,
                     const FloorType& type);

  /// Validates an object and stages it for the next boot, in a transaction of its own.
  void Stage(const TarnConfigStore::ConfigStoreObjectId& id, Json::Value& data,
             const FloorType& type);

  /// Validates what is staged, which has to be content of one type, and makes it current; all in one
  /// transaction. The ids of what was applied, each ended by a NUL.
  std::string ApplyStaged(const TarnConfigStore::ConfigStoreObjectId& id, const FloorType& type);

  /// Replaces a row as it is, without a look at what is in it. For filling the store.
  void Fill(const TarnConfigStore::ConfigStoreObjectId& id, const RowValues& values);

  /// BEGIN IMMEDIATE, COMMIT and the like.
  void Run(const char* sql) { database_.Run(sql); }

 private:
  struct Columns;
  static const Columns kInstanceColumns;
  static const Columns kOneColumns;
  class Transaction;
  class Existing;

  static void BindType(FloorStatement& statement, const TarnConfigStore::ConfigStoreObjectId& id);
  int ReadUpgradeContext() const;
  static void Check(const TarnConfigStore::ConfigStoreObjectId& id, Json::Value& data,
                    const FloorType& type, const std::unordered_set<int>& rules);
  void RefuseDuringBoot();
  void RefuseToNotify();
  void RefuseRemediation();
  void WriteFresh(const TarnConfigStore::ConfigStoreObjectId& id, const FloorType& type,
                  const std::vector<std::unique_ptr<FloorObject>>& objects);
  void WriteOver(const TarnConfigStore::ConfigStoreObjectId& id, const FloorType& type,
                 const std::vector<std::unique_ptr<FloorObject>>& objects);
  static std::unique_ptr<FloorObject> MakeObject(const FloorStatement& row, const Columns& columns,
                                                 int upgradeContext, std::string_view instanceId);
  static void BindRow(FloorStatement& statement, const TarnConfigStore::ConfigStoreObjectId& id,
                      std::string_view version);

  std::string upgradeContextPath_;
  FloorDatabase database_;
  FloorStatement begin_;
  FloorStatement commit_;
  FloorStatement getOne_;
  FloorStatement getAll_;
  FloorStatement getKeyValue_;
  FloorStatement setKeyValue_;
  FloorStatement getRevision_;
  FloorStatement getExisting_;
  FloorStatement deleteAll_;
  FloorStatement write_;
  FloorStatement insert_;
  FloorStatement update_;
  FloorStatement stage_;
  FloorStatement getStaged_;
  FloorStatement apply_;
  FloorStatement unstageAll_;
  ScratchValue scratch_;
  TextMaker text_;
};

}  // namespace Benchmarks
