// One configuration type in memory.
#pragma once

#include "platform/schema_store.h"

#include "json/json_doc.h"
#include "json/type_schema_view.h"
#include "json_schema/registration.h"

#include <atomic>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace TarnSchemaStore {

class LoadedType;

/// A type, or a property of one looked at as a type of its own. Lives inside its LoadedType; the
/// handles that are given out keep that alive.
class TypeNode final : public SchemaObject {
 public:
  /// \param place     of the objects
  /// \param idMember  name of the member that tells them apart, or empty
  TypeNode(const LoadedType& type, std::string key, Json::SchemaPlace place,
           std::string_view idMember);
  TypeNode(const TypeNode&) = delete;
  TypeNode& operator=(const TypeNode&) = delete;
  ~TypeNode() override;

  const std::string& GetComponent() const override;
  const std::string& GetGroup() const override;
  const std::string& GetKey() const override { return key_; }
  const Json::Value& GetSchemaDocument() const override { return *place_.Schema(); }
  std::shared_ptr<SchemaObject> GetPropertySchema(const std::string& key) const override;
  const Json::Value* GetPropertyValueSchema(const std::string& key) const override;
  const std::string& GetVersion() const override;
  std::shared_ptr<TarnConfigStore::JsonDoc> GetIdMap() const override { return idMap_; }
  std::shared_ptr<TarnConfigStore::JsonDoc> GetDefaults() const override { return defaults_; }
  const std::string& GetValueType() const override;
  bool IsVital() const override { return place_.OwnKind() == Json::Kind::VITAL; }
  bool IsCached() const override { return place_.OwnKind() == Json::Kind::CACHED; }
  bool IsBootAccessible() const override;
  bool IsRebootRequired() const override;
  int GetConfigType() const override { return configType_; }
  bool IsNonSingleton() const override { return nonSingleton_; }
  bool IsConfirmedDuringUpgrade() const override;
  const std::vector<std::string>& GetPropertyNames() const override { return names_; }
  Json::SchemaPlace GetSchemaPlace() const override { return place_; }

 private:
  std::unique_ptr<TypeNode> MakeChild(const std::string& name) const;

  const LoadedType& type_;
  std::string key_;
  Json::SchemaPlace place_;
  const Json::Value* properties_;
  int configType_;
  bool nonSingleton_;
  std::vector<std::string> names_;
  std::shared_ptr<TarnConfigStore::JsonDoc> idMap_;
  std::shared_ptr<TarnConfigStore::JsonDoc> defaults_;
  // One place for each property, filled on its first use: schemas may contain themselves.
  mutable std::unique_ptr<std::atomic<const TypeNode*>[]> children_;
};

/// Owns a type file's document and the nodes that look into it.
class LoadedType : public std::enable_shared_from_this<LoadedType> {
 public:
  /// Reads the text of a type file that was checked when it was installed. Raises
  /// std::runtime_error, naming the type, when the text is damaged.
  static std::shared_ptr<SchemaObject> FromText(const TypeName& name, std::string_view text);

  LoadedType(const LoadedType&) = delete;
  LoadedType& operator=(const LoadedType&) = delete;
  ~LoadedType();

  /// A handle to one of the nodes that keeps them all alive.
  std::shared_ptr<SchemaObject> Handle(const TypeNode& node) const;

  const TypeName& Name() const { return name_; }
  const std::string& Version() const { return version_; }
  const std::string& ValueType() const { return valueType_; }
  bool BootAccessible() const { return bootAccessible_; }
  bool RebootRequired() const { return rebootRequired_; }
  bool ConfirmedDuringUpgrade() const { return confirmedDuringUpgrade_; }

 private:
  LoadedType(const TypeName& name, std::string_view text);

  TypeName name_;
  TarnConfigStore::JsonDoc document_;
  std::unique_ptr<const Json::TypeSchemaView> view_;
  std::string version_;
  std::string valueType_;
  bool bootAccessible_ = false;
  bool rebootRequired_ = false;
  bool confirmedDuringUpgrade_ = false;
  std::unique_ptr<JsonValidator::Registration> registration_;
  std::unique_ptr<TypeNode> root_;
};

}  // namespace TarnSchemaStore
