// The floor: what a caller would write by hand for one store, with nothing between it and SQLite,
// RapidJSON and the compiled validation.
#pragma once

#include "tarnconfigstore/object_id.h"

#include "platform/json_validator.h"

#include "floor_database.h"
#include "floor_object.h"
#include "json/json.h"
#include "json_schema/registration.h"
#include "samples.h"

#include <map>
#include <memory>
#include <string>
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

  /// Validates an object of a type without vital and cached members, and replaces its row.
  void Set(const TarnConfigStore::ConfigStoreObjectId& id, Json::Value& data,
           const FloorType& type);

  /// The number of writes of an object; -1 when there is no row.
  std::int64_t GetRevision(const TarnConfigStore::ConfigStoreObjectId& id);

  /// Validates all objects, and replaces all instances of a type by them in one transaction; kept
  /// instances keep their creation time, and their revision goes on.
  void SetInstances(const TarnConfigStore::ConfigStoreObjectId& id,
                    const std::vector<std::unique_ptr<FloorObject>>& objects,
                    const FloorType& type);

  /// An entry's text; empty when there is none.
  std::string ReadKeyValue(std::string_view key);

  /// Replaces a row as it is, without a look at what is in it. For filling the store.
  void Fill(const TarnConfigStore::ConfigStoreObjectId& id, const RowValues& values);

  /// BEGIN IMMEDIATE, COMMIT and the like.
  void Run(const char* sql) { database_.Run(sql); }

 private:
  struct Columns;
  static const Columns kInstanceColumns;
  struct Existing {
    int revision;
    std::string creationTime;
  };
  int ReadUpgradeContext() const;
  void Check(const TarnConfigStore::ConfigStoreObjectId& id, Json::Value& data,
             const FloorType& type) const;
  void RefuseDuringBoot();
  void RefuseToNotify();
  void BindUserValue(const TarnConfigStore::ConfigStoreObjectId& id, const Json::Value& data,
                     const FloorType& type);
  std::map<std::string, Existing> ReadExisting(const TarnConfigStore::ConfigStoreObjectId& id);
  std::unique_ptr<FloorObject> MakeObject(const FloorStatement& row, const Columns& columns,
                                          int upgradeContext);
  void BindRow(const TarnConfigStore::ConfigStoreObjectId& id, std::string_view version);

  std::string upgradeContextPath_;
  FloorDatabase database_;
  FloorStatement getOne_;
  FloorStatement getAll_;
  FloorStatement getKeyValue_;
  FloorStatement getRevision_;
  FloorStatement getExisting_;
  FloorStatement deleteAll_;
  FloorStatement write_;
  rapidjson::StringBuffer text_;
};

}  // namespace Benchmarks
