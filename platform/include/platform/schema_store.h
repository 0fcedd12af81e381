// Configuration types: their schemas, flags and defaults.
#pragma once

#include "json/json.h"
#include "json/json_doc.h"
#include "json/type_schema_view.h"

#include <memory>
#include <string>
#include <tuple>
#include <vector>

namespace TarnSchemaStore {

/// What part of an object a type's data belongs to, from the "vital" and "cached" tags of its
/// schema.
enum ConfigType : int {
  CONFIG_USER = 0,
  CONFIG_VITAL = 1,
  CONFIG_CACHED = 3,
  CONFIG_VITAL_AND_CACHED = 4,  ///< members of both kinds, none for the user
  CONFIG_MIXED = 5,             ///< user members and others
};

/// One configuration type. Immutable; safe from several threads. The order of the operations is
/// fixed: hosts bring classes of their own.
class SchemaObject {
 public:
  virtual const std::string& GetComponent() const = 0;
  virtual const std::string& GetGroup() const = 0;
  virtual const std::string& GetKey() const = 0;
  /// The type's JSON Schema with its annotations. It stays unchanged at its address for as long as
  /// this object lives.
  virtual const Json::Value& GetSchemaDocument() const = 0;
  /// The schema of a top-level property as a type of its own (for an array of objects: of its
  /// elements); empty when there is none.
  virtual std::shared_ptr<SchemaObject> GetPropertySchema(const std::string& key) const = 0;
  /// The schema value of a top-level property, or null.
  virtual const Json::Value* GetPropertyValueSchema(const std::string& key) const = 0;
  virtual const std::string& GetVersion() const = 0;
  /// A JSON object: key of a type or of an array member -> name of the member that holds the
  /// instance id. Empty pointer when neither the type nor anything in it has instances.
  virtual std::shared_ptr<TarnConfigStore::JsonDoc> GetIdMap() const = 0;
  /// A JSON object of the values that absent members read as; empty pointer when there are none.
  virtual std::shared_ptr<TarnConfigStore::JsonDoc> GetDefaults() const = 0;
  /// "tarn-shared" for types shared with a SmartNIC, "tarn" for all others.
  virtual const std::string& GetValueType() const = 0;
  virtual bool IsVital() const = 0;   ///< the whole type is tagged vital
  virtual bool IsCached() const = 0;  ///< the whole type is tagged cached
  virtual bool IsBootAccessible() const = 0;
  virtual bool IsRebootRequired() const = 0;
  virtual int GetConfigType() const = 0;
  virtual bool IsNonSingleton() const = 0;
  virtual bool IsConfirmedDuringUpgrade() const = 0;
  /// Names of the top-level properties, in the schema's order.
  virtual const std::vector<std::string>& GetPropertyNames() const = 0;
  /// What the schema says of each place in the objects: the root of a Json::TypeSchemaView that
  /// lives as long as this object.
  virtual Json::SchemaPlace GetSchemaPlace() const = 0;

 protected:
  SchemaObject() = default;
  SchemaObject(const SchemaObject&) = default;
  SchemaObject& operator=(const SchemaObject&) = default;
  virtual ~SchemaObject() = default;
};

/// Identifies a type.
struct TypeName {
  std::string component;
  std::string group;
  std::string key;

  friend bool operator==(const TypeName&, const TypeName&) = default;
  friend bool operator<(const TypeName& a, const TypeName& b) {
    return std::tie(a.component, a.group, a.key) < std::tie(b.component, b.group, b.key);
  }
};

/// All types as they were at one moment. Safe from several threads.
class SchemaObjectCache {
 public:
  /// Names of all installed types, sorted. Raises as GetSchemaObject does.
  virtual std::vector<TypeName> GetTypes() const = 0;
  /// As SchemaStore::GetSchemaObject.
  virtual std::shared_ptr<SchemaObject> GetSchemaObject(const std::string& component,
                                                        const std::string& group,
                                                        const std::string& key) = 0;

 protected:
  SchemaObjectCache() = default;
  SchemaObjectCache(const SchemaObjectCache&) = default;
  SchemaObjectCache& operator=(const SchemaObjectCache&) = default;
  virtual ~SchemaObjectCache() = default;
};

/// The process's view of the installed types. Types that this process installed, changed or removed
/// are seen at the next GetStore or GetCache, those of another process soon after; objects already
/// handed out stay valid as they are. Safe from several threads.
class SchemaStore {
 public:
  /// The type, or an empty pointer when it is not installed. Raises std::runtime_error, with the
  /// last store error set, when the schema store cannot be read: a broken store must never look
  /// like one without types.
  virtual std::shared_ptr<SchemaObject> GetSchemaObject(const std::string& component,
                                                        const std::string& group,
                                                        const std::string& key) = 0;

  /// Never empty. The flag is not used.
  static std::shared_ptr<SchemaStore> GetStore(bool flag);
  static std::shared_ptr<SchemaObjectCache> GetCache();

 protected:
  SchemaStore() = default;
  SchemaStore(const SchemaStore&) = default;
  SchemaStore& operator=(const SchemaStore&) = default;
  virtual ~SchemaStore() = default;
};

/// Fills a document with the schema of a whole document, {component: {group: {key: object or array
/// of instances}}}: of the types that the value names and the cache knows. A type whose value is an
/// array is there as an array of its objects. What is not installed is not declared. Raises
/// std::runtime_error as SchemaStore::GetSchemaObject does.
void GenerateSchemaDocument(const Json::Value& value,
                            const std::shared_ptr<SchemaObjectCache>& cache,
                            TarnConfigStore::JsonDoc& document);

}  // namespace TarnSchemaStore
