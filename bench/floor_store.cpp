#include "floor_store.h"

#include "platform/host_paths.h"

#include "persistence/statements.h"
#include "validation/rule_sets.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <iterator>
#include <stdexcept>
#include <unistd.h>

namespace Benchmarks {
namespace {

constexpr std::int64_t kStoreMark = 0x54435331;
constexpr std::int64_t kStoreLayout = 2;
constexpr std::int64_t kSchemaStoreMark = 0x54535331;
constexpr std::int64_t kSchemaStoreLayout = 1;

constexpr const char* kReadType =
    "SELECT Document FROM Types WHERE Component = ? AND ConfigGroup = ? AND Name = ?";
constexpr const char* kReadKeyValue = "SELECT Value FROM KeyValue WHERE Key = ?";

// An object's empty members are not stored.
void RemoveEmptyMembers(Json::Value& data) {
  for (auto member = data.MemberBegin(); member != data.MemberEnd();) {
    member = Json::IsEmptyContainer(member->value) ? data.EraseMember(member) : member + 1;
  }
}

void BindType(FloorStatement& statement, const TarnConfigStore::ConfigStoreObjectId& id) {
  statement.Bind(1, id.key);
  statement.Bind(2, id.group);
  statement.Bind(3, id.component);
}

// Looks for one member of the outermost object.
struct MemberText : rapidjson::BaseReaderHandler<Json::Encoding, MemberText> {
  MemberText(std::string_view member, std::string_view wanted) : member_(member), wanted_(wanted) {}
  bool Default() {
    isMember_ = false;
    return true;
  }
  bool String(const char* text, rapidjson::SizeType length, bool /*copy*/) {
    found = found || (isMember_ && std::string_view(text, length) == wanted_);
    return Default();
  }
  bool Key(const char* text, rapidjson::SizeType length, bool /*copy*/) {
    isMember_ = depth_ == 1 && std::string_view(text, length) == member_;
    return true;
  }
  bool StartObject() { return Enter(); }
  bool StartArray() { return Enter(); }
  bool EndObject(rapidjson::SizeType /*count*/) { return Leave(); }
  bool EndArray(rapidjson::SizeType /*count*/) { return Leave(); }

  bool found = false;

 private:
  bool Enter() {
    ++depth_;
    return Default();
  }
  bool Leave() {
    --depth_;
    return true;
  }
  std::string_view member_;
  std::string_view wanted_;
  int depth_ = 0;
  bool isMember_ = false;
};

bool HasText(std::string_view text, std::string_view member, std::string_view wanted) {
  constexpr unsigned kFlags =
      rapidjson::kParseFullPrecisionFlag | rapidjson::kParseValidateEncodingFlag;
  MemberText handler(member, wanted);
  rapidjson::StringStream stream(text.data());
  rapidjson::Reader reader;
  if (reader.Parse<kFlags>(stream, handler).IsError()) {
    throw std::runtime_error("floor: a row that is not JSON");
  }
  return handler.found;
}

}  // namespace

// Where the library's two statements have what.
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

const FloorStore::Columns FloorStore::kInstanceColumns = {2, 0, 3, 7, 6, 4, 5, 1, 8, 9, 10};

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
  const std::string_view text = statement.Text(0);
  file_ = std::make_unique<FloorObject>(text.size());
  file_->Lay(text);
  schema_ = &file_->Data()["schema"];
  version_ = file_->Data()["version"].GetString();
  view_ = std::make_unique<const Json::TypeSchemaView>(*schema_);
  registration_ = std::make_unique<JsonValidator::Registration>(*view_);
}

FloorStore::FloorStore(const std::string& root)
    : upgradeContextPath_(root + HostPaths::kUpgradeContext),
      database_(root + HostPaths::kStore, FloorDatabase::Access::WRITE, kStoreMark, kStoreLayout),
      getOne_(database_, TarnConfigStore::READ_TABLE_CONFIG.Text()),
      getAll_(database_, TarnConfigStore::GET_INSTANCES.Text()),
      getKeyValue_(database_, kReadKeyValue),
      getRevision_(database_, TarnConfigStore::READ_REVISION.Text()),
      getExisting_(database_, TarnConfigStore::READ_EXISTING_INSTANCES.Text()),
      deleteAll_(database_, TarnConfigStore::DELETE_INSTANCES.Text()),
      write_(database_, TarnConfigStore::WRITE_COMPLETE) {}

std::unique_ptr<FloorObject> FloorStore::Get(const TarnConfigStore::ConfigStoreObjectId& id) {
  constexpr Columns kColumns = {-1, 0, 2, 5, 1, 3, 4, 6, 7, 8, 9};
  BindType(getOne_, id);
  getOne_.Bind(4, id.instanceId);
  std::unique_ptr<FloorObject> object;
  if (getOne_.Step()) {
    object = MakeObject(getOne_, kColumns, ReadUpgradeContext());
    object->instanceId = id.instanceId;
  }
  getOne_.Reset();
  return object;
}

std::vector<std::unique_ptr<FloorObject>> FloorStore::GetInstances(
    const TarnConfigStore::ConfigStoreObjectId& id) {
  const int upgradeContext = ReadUpgradeContext();
  BindType(getAll_, id);
  std::vector<std::unique_ptr<FloorObject>> objects;
  while (getAll_.Step()) {
    objects.push_back(MakeObject(getAll_, kInstanceColumns, upgradeContext));
    objects.back()->instanceId = getAll_.Text(kInstanceColumns.identifier);
  }
  getAll_.Reset();
  return objects;
}

std::vector<std::unique_ptr<FloorObject>> FloorStore::GetInstancesWhere(
    const TarnConfigStore::ConfigStoreObjectId& id, std::string_view member,
    std::string_view wanted) {
  const int upgradeContext = ReadUpgradeContext();
  BindType(getAll_, id);
  std::vector<std::unique_ptr<FloorObject>> objects;
  while (getAll_.Step()) {
    const int layers[] = {kInstanceColumns.automatic, kInstanceColumns.cached,
                          kInstanceColumns.vital, kInstanceColumns.user};
    const auto filled = std::count_if(std::begin(layers), std::end(layers),
                                      [&](int layer) { return !getAll_.IsNull(layer); });
    if (filled == 1 && upgradeContext == 0 && !getAll_.IsNull(kInstanceColumns.user) &&
        !HasText(getAll_.Text(kInstanceColumns.user), member, wanted)) {
      continue;
    }
    auto object = MakeObject(getAll_, kInstanceColumns, upgradeContext);
    const Json::Value* value = Json::FindMember(object->Data(), member);
    if (value != nullptr && value->IsString() && Json::Text(*value) == wanted) {
      objects.push_back(std::move(object));
      objects.back()->instanceId = getAll_.Text(kInstanceColumns.identifier);
    }
  }
  getAll_.Reset();
  return objects;
}

std::int64_t FloorStore::GetRevision(const TarnConfigStore::ConfigStoreObjectId& id) {
  BindType(getRevision_, id);
  getRevision_.Bind(4, id.instanceId);
  const std::int64_t revision = getRevision_.Step() ? getRevision_.Number(1) : -1;
  getRevision_.Reset();
  return revision;
}

void FloorStore::Set(const TarnConfigStore::ConfigStoreObjectId& id, Json::Value& data,
                     const FloorType& type) {
  Check(id, data, type);
  RefuseDuringBoot();
  BindUserValue(id, data, type);
  write_.Bind(12, 0);
  write_.Step();
  write_.Reset();
  RefuseToNotify();
}

void FloorStore::SetInstances(const TarnConfigStore::ConfigStoreObjectId& id,
                              const std::vector<std::unique_ptr<FloorObject>>& objects,
                              const FloorType& type) {
  RefuseDuringBoot();
  for (const auto& object : objects) {
    Check(id, object->Data(), type);
  }
  Run("BEGIN IMMEDIATE");
  const std::map<std::string, Existing> existing = ReadExisting(id);
  BindType(deleteAll_, id);
  deleteAll_.Step();
  deleteAll_.Reset();
  TarnConfigStore::ConfigStoreObjectId instance = id;
  for (const auto& object : objects) {
    instance.instanceId = object->instanceId;
    BindUserValue(instance, object->Data(), type);
    const auto known = existing.find(object->instanceId);
    if (known == existing.end()) {
      write_.Bind(12, 0);
    } else {
      write_.Bind(11, known->second.creationTime);
      write_.Bind(12, known->second.revision);
    }
    write_.Step();
    write_.Reset();
  }
  Run("COMMIT");
  RefuseToNotify();
}

std::map<std::string, FloorStore::Existing> FloorStore::ReadExisting(
    const TarnConfigStore::ConfigStoreObjectId& id) {
  std::map<std::string, Existing> existing;
  BindType(getExisting_, id);
  while (getExisting_.Step()) {
    existing.emplace(getExisting_.Text(0), Existing{static_cast<int>(getExisting_.Number(1)),
                                                    std::string(getExisting_.Text(2))});
  }
  getExisting_.Reset();
  return existing;
}

void FloorStore::Check(const TarnConfigStore::ConfigStoreObjectId& id, Json::Value& data,
                       const FloorType& type) const {
  static const std::string noContext;
  RemoveEmptyMembers(data);
  Json::Document findings;
  JsonValidator::Validate(type.Schema(), data, findings, TarnConfigStore::SetRules(), noContext);
  if (!findings.Empty()) {
    throw std::runtime_error("floor: an object that does not fit its type: " + id.toString());
  }
}

void FloorStore::RefuseDuringBoot() {
  if (ReadKeyValue("IS_BOOT") == "true") {
    throw std::runtime_error("floor: the host is booting");
  }
}

void FloorStore::RefuseToNotify() {
  if (ReadKeyValue("NOTIFY_KEELD") == "true") {
    throw std::runtime_error("floor: notification is switched on");
  }
}

// All of a row but the base of its revision.
void FloorStore::BindUserValue(const TarnConfigStore::ConfigStoreObjectId& id,
                               const Json::Value& data, const FloorType& type) {
  text_.Clear();
  rapidjson::Writer<rapidjson::StringBuffer, Json::Encoding, Json::Encoding,
                    rapidjson::CrtAllocator, rapidjson::kWriteValidateEncodingFlag>
      writer(text_);
  if (!data.Accept(writer)) {
    throw std::runtime_error("floor: data that is not UTF-8: " + id.toString());
  }
  BindRow(id, type.Version());
  write_.Bind(8, std::string_view(text_.GetString(), text_.GetSize()));
}

void FloorStore::Fill(const TarnConfigStore::ConfigStoreObjectId& id, const RowValues& values) {
  BindRow(id, "1.0");
  write_.Bind(12, 0);
  int index = 7;
  for (const std::string* value :
       {&values.automatic, &values.user, &values.vital, &values.cached}) {
    if (!value->empty()) {
      write_.Bind(index, *value);
    }
    ++index;
  }
  write_.Step();
  write_.Reset();
}

void FloorStore::BindRow(const TarnConfigStore::ConfigStoreObjectId& id, std::string_view version) {
  write_.Bind(1, id.instanceId);
  write_.Bind(2, id.key);
  write_.Bind(3, id.group);
  write_.Bind(4, id.component);
  write_.Bind(5, version);
  write_.Bind(6, 1);
}

std::unique_ptr<FloorObject> FloorStore::MakeObject(const FloorStatement& row,
                                                    const Columns& columns, int upgradeContext) {
  int user = columns.user;
  if (upgradeContext != 0) {
    user = row.IsNull(columns.desired) ? columns.user : columns.desired;
  } else if (row.Text(columns.success) != "1") {
    user = -1;
  }
  std::size_t size = 0;
  const int layers[] = {columns.automatic, columns.cached, columns.vital, user};
  for (const int layer : layers) {
    size += layer < 0 ? 0 : row.Text(layer).size();
  }
  auto object = std::make_unique<FloorObject>(size);
  for (const int layer : layers) {
    if (layer >= 0 && !row.IsNull(layer)) {
      object->Lay(row.Text(layer));
    }
  }
  object->version = row.Text(columns.version);
  object->creationTime = row.Text(columns.creationTime);
  object->modifiedTime = row.Text(columns.modifiedTime);
  object->revision = row.Number(columns.revision);
  return object;
}

int FloorStore::ReadUpgradeContext() const {
  const int file = open(upgradeContextPath_.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) {
    return 0;
  }
  char text[32] = {};
  const ssize_t length = read(file, text, sizeof text - 1);
  close(file);
  return length <= 0 ? 0 : std::atoi(text);
}

std::string FloorStore::ReadKeyValue(std::string_view key) {
  getKeyValue_.Bind(1, key);
  std::string value;
  if (getKeyValue_.Step()) {
    value = getKeyValue_.Text(0);
  }
  getKeyValue_.Reset();
  return value;
}

}  // namespace Benchmarks
