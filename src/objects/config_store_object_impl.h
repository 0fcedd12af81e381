// The configuration object behind ConfigStoreObject.
#pragma once

#include "tarnconfigstore/config_store_object.h"

#include "platform/schema_store.h"

#include "json/with_room.h"
#include "objects/store_object_impl.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace TarnConfigStore {

class Arena;

/// Contracts as for ConfigStoreObject, whose operations forward to those of the same name here.
class ConfigStoreObjectImpl : public StoreObjectImpl {
 public:
  /// A new object; raises ConfigStoreException 1037 when its type is not installed.
  explicit ConfigStoreObjectImpl(const ConfigStoreObjectId& id);

  /// An object from a stored row.
  /// \param parent    the object that this one is part of; empty for a whole object
  /// \param place     its place among that object's instances
  /// \param schema    its type; gives the id map and the defaults where the two documents are empty
  /// \param whole     true for a whole object
  ConfigStoreObjectImpl(const ConfigStoreObjectId& id, const ConfigStoreObjectId& parent,
                        std::optional<unsigned long> place, std::shared_ptr<JsonDoc> const& data,
                        std::shared_ptr<TarnSchemaStore::SchemaObject> const& schema,
                        const std::string& version, const std::string& creationTime,
                        const std::string& modifiedTime, int revision, bool whole,
                        std::shared_ptr<JsonDoc> const& idMap,
                        std::shared_ptr<JsonDoc> const& defaults);

  /// What a row says of the object in it.
  struct Metadata {
    std::string_view version;
    std::string_view creationTime;
    std::string_view modifiedTime;
    std::int32_t revision = kDefaultRevision;
  };

  /// The same of a whole object with the documents of its type, and one block of memory for all but the
  /// data.
  /// \param arena  where it is made, unless it is null
  static std::shared_ptr<ConfigStoreObjectImpl> Make(
      const ConfigStoreObjectId& id, std::shared_ptr<JsonDoc> data,
      std::shared_ptr<TarnSchemaStore::SchemaObject> const& schema, const Metadata& metadata,
      Arena* arena = nullptr);
  /// For Make. A room that is not there is made.
  ConfigStoreObjectImpl(const Room& room, const ConfigStoreObjectId& id,
                        std::shared_ptr<JsonDoc> data,
                        std::shared_ptr<TarnSchemaStore::SchemaObject> const& schema,
                        const Metadata& metadata);

  /// A view of an object within another one. What the store knows about the parent holds for it.
  /// \param type  its type, never empty
  ConfigStoreObjectImpl(const ConfigStoreObjectImpl& parent, const SubObjectId& id,
                        const std::shared_ptr<TarnSchemaStore::SchemaObject>& type,
                        std::unique_ptr<const SubObjectPlace> place);

  const Json::Value* GetValuePtrDefault(const char* key, bool& isDefault) const override;

  // Static, because what lies inside keeps the object alive: every object is 16 bytes smaller than
  // if it knew who shares it.
  using Shared = std::shared_ptr<ConfigStoreObjectImpl>;
  static std::shared_ptr<ConfigStoreObject> CreateSubObject(const Shared& object,
                                                            const SubObjectId& id);
  static std::shared_ptr<ConfigStoreObject> GetSubObject(const Shared& object,
                                                         const SubObjectId& id);
  static std::vector<std::shared_ptr<ConfigStoreObject>> GetSubObjectInstances(
      const Shared& object, const std::string& key);
  static void DeleteSubObject(const Shared& object, const SubObjectId& id);
  void DeleteSubObjectInstances(const std::string& key);
  std::optional<std::string> GetPath(const std::string& pointer) const;

  std::string GetVersion() const { return std::string(version_); }
  std::string GetCreationTime() const { return std::string(creationTime_); }
  std::string GetModifiedTime() const { return std::string(modifiedTime_); }
  std::int32_t GetRevision() const { return revision_; }
  /// Its type; empty where the object was made without.
  const std::shared_ptr<TarnSchemaStore::SchemaObject>& GetSchema() const { return schema_; }

  /// Writes the identifier's instance id into the member that carries it, in types that have one.
  void SetInstanceIdFromCsoId();
  /// The id map as text, "{}" when there is none.
  std::string GetIdMapStr() const;
  /// The data as text, without generated instance ids.
  std::string GetData() const;
  /// The data as text, as it is stored. Raises ConfigStoreException 2000 when it holds what JSON
  /// cannot say.
  std::string GetSerializedData() const;
  /// Sets a member to a copy of a JSON value (a Json::Value), which may be part of this object.
  void SetValueEx(const char* key, const void* value);

 private:
  std::string SerializedForCallers(const Json::Value& value) const;
  std::shared_ptr<JsonDoc> IdMap() const;

  std::shared_ptr<JsonDoc> idMap_;                     // where it is not the type's
  std::unique_ptr<const ConfigStoreObjectId> parent_;  // where there is one and no place tells it
  bool whole_;
  // The texts lie behind the object, in ownTexts_ or, of a view, in its parent.
  std::string_view version_;
  std::shared_ptr<JsonDoc> defaults_;
  std::string_view creationTime_;
  std::string_view modifiedTime_;
  std::int32_t revision_;
  std::optional<unsigned long> place_;
  std::shared_ptr<TarnSchemaStore::SchemaObject> schema_;
  std::unique_ptr<char[]> ownTexts_;
};

/// Name of the member that holds the instance id of a type's objects. Raises ConfigStoreException
/// 1032 with the type's key when the type names none.
std::string InstanceIdMember(const TarnSchemaStore::SchemaObject& schema);

/// The instance id in a JSON object of a type. Raises ConfigStoreException 1032 with the member's
/// name when the member that the type names is missing or no string.
std::string GetInstanceIdFromValue(const Json::Value& value,
                                   const TarnSchemaStore::SchemaObject& schema);

}  // namespace TarnConfigStore
