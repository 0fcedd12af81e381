#include "floor_store.h"

#include "platform/host_paths.h"

#include "floor_transaction.h"
#include "persistence/boot_statements.h"
#include "persistence/statements.h"

#include <stdexcept>

namespace Benchmarks {
namespace {

constexpr const char* kReadKeyValue = "SELECT Value FROM KeyValue WHERE Key = ?";
constexpr const char* kWriteKeyValue =
    "INSERT INTO KeyValue(Key, Value) VALUES(?1, ?2) ON CONFLICT(Key) DO UPDATE SET Value = "
    "excluded.Value";
constexpr const char* kInsertRow =
    "INSERT INTO Config (Identifier, Name, ConfigGroup, Component, Version, UserValue) VALUES (?1, "
    "?2, ?3, ?4, ?5, ?6)";

// An object's empty members are not stored.
void RemoveEmptyMembers(Json::Value& data) {
  for (auto member = data.MemberBegin(); member != data.MemberEnd();) {
    member = Json::IsEmptyContainer(member->value) ? data.EraseMember(member) : member + 1;
  }
}

}  // namespace

FloorType::FloorType(const std::string& root, const TarnConfigStore::ConfigStoreObjectId& id) {
  const FloorDatabase database(root + HostPaths::kSchemaStore, FloorDatabase::Access::READ,
                               kSchemaStoreMark, kSchemaStoreLayout);
  FloorStatement statement(database, kReadType);
  statement.Bind(1, id.component);
  statement.Bind(2, id.group);
  statement.Bind(3, id.key);
  if (!statement.Step()) {
    throw std::runtime_error("floor: no such type: " + id.toString());
  }
  file_ = FloorObject::Make({}, statement.Text(0));
  schema_ = &file_->Data()["schema"];
  version_ = file_->Data()["version"].GetString();
  view_ = std::make_unique<const Json::TypeSchemaView>(*schema_);
  registration_ = std::make_unique<JsonValidator::Registration>(*view_);
}

FloorStore::FloorStore(const std::string& root)
    : upgradeContextPath_(root + HostPaths::kUpgradeContext),
      database_(root + HostPaths::kStore, FloorDatabase::Access::WRITE, kStoreMark, kStoreLayout),
      begin_(database_, "BEGIN IMMEDIATE"),
      commit_(database_, "COMMIT"),
      getOne_(database_, TarnConfigStore::READ_TABLE_CONFIG.Text()),
      getAll_(database_, TarnConfigStore::GET_INSTANCES.Text()),
      getKeyValue_(database_, kReadKeyValue),
      setKeyValue_(database_, kWriteKeyValue),
      getRevision_(database_, TarnConfigStore::READ_REVISION.Text()),
      getExisting_(database_, TarnConfigStore::READ_EXISTING_INSTANCES.Text()),
      deleteAll_(database_, TarnConfigStore::DELETE_INSTANCES.Text()),
      write_(database_, TarnConfigStore::WRITE_COMPLETE),
      insert_(database_, kInsertRow),
      update_(database_, TarnConfigStore::WRITE_CONTEXT_USER),
      stage_(database_, TarnConfigStore::STAGE_SET),
      getStaged_(database_, TarnConfigStore::READ_STAGED),
      apply_(database_, TarnConfigStore::WRITE_CONTEXT_UPGRADE),
      unstageAll_(database_, TarnConfigStore::UNSTAGE_ALL) {}

bool FloorStore::Holds(std::string_view key, std::string_view value) {
  getKeyValue_.Bind(1, key);
  const bool holds = getKeyValue_.Step() && getKeyValue_.Text(0) == value;
  getKeyValue_.Reset();
  return holds;
}

void FloorStore::RefuseDuringBoot() {
  if (Holds("IS_BOOT", "true")) {
    throw std::runtime_error("floor: the host is booting");
  }
}

void FloorStore::RefuseToNotify() {
  if (Holds("NOTIFY_KEELD", "true")) {
    throw std::runtime_error("floor: notification is switched on");
  }
}

void FloorStore::BindType(FloorStatement& statement,
                          const TarnConfigStore::ConfigStoreObjectId& id) {
  statement.Bind(1, id.key);
  statement.Bind(2, id.group);
  statement.Bind(3, id.component);
}

void FloorStore::BindRow(FloorStatement& statement, const TarnConfigStore::ConfigStoreObjectId& id,
                         std::string_view version) {
  statement.Bind(1, id.instanceId);
  statement.Bind(2, id.key);
  statement.Bind(3, id.group);
  statement.Bind(4, id.component);
  statement.Bind(5, version);
}

void FloorStore::Check(const TarnConfigStore::ConfigStoreObjectId& id, Json::Value& data,
                       const FloorType& type, const std::unordered_set<int>& rules) {
  static const std::string noContext;
  RemoveEmptyMembers(data);
  Json::Document findings;
  JsonValidator::Validate(type.Schema(), data, findings, rules, noContext);
  const Json::Value* named = id.instanceId.empty() ? nullptr : Json::FindMember(data, "id");
  if (!findings.Empty() || data.ObjectEmpty() ||
      (named != nullptr && Json::Text(*named) != id.instanceId)) {
    throw std::runtime_error("floor: an object that does not fit its type: " + id.toString());
  }
}

}  // namespace Benchmarks
