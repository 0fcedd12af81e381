#include "floor_store.h"
#include "floor_transaction.h"
#include "json/type_schema_view.h"
#include "validation/rule_sets.h"

#include <algorithm>
#include <stdexcept>

namespace Benchmarks {

using TarnConfigStore::ConfigStoreObjectId;

// What is carried over to instances that are written anew. They come in the order of their ids, and are mostly
// asked for in that order.
class FloorStore::Existing {
 public:
  Existing(FloorStatement& statement, const ConfigStoreObjectId& id) {
    BindType(statement, id);
    while (statement.Step()) {
      const std::string_view instance = statement.Text(0);
      const std::string_view created = statement.Text(2);
      rows_.push_back(
          {texts_.size(), instance.size(), created.size(), static_cast<int>(statement.Number(1))});
      texts_.append(instance).append(created);
    }
    statement.Reset();
  }

  /// Binds creation time and revision base of a row, as WRITE_COMPLETE takes them.
  void Bind(FloorStatement& statement, std::string_view instanceId) {
    if (next_ == rows_.size() || Id(rows_[next_]) != instanceId) {
      const auto found = std::lower_bound(
          rows_.begin(), rows_.end(), instanceId,
          [this](const Row& row, std::string_view wanted) { return Id(row) < wanted; });
      next_ = static_cast<std::size_t>(found - rows_.begin());
    }
    const bool isKnown = next_ < rows_.size() && Id(rows_[next_]) == instanceId;
    if (isKnown) {
      const Row& row = rows_[next_++];
      statement.Bind(11, std::string_view(texts_).substr(row.at + row.idSize, row.createdSize));
      statement.Bind(12, row.revision);
    } else {
      statement.BindNull(11);
      statement.Bind(12, 0);
    }
  }

 private:
  struct Row {
    std::size_t at;
    std::size_t idSize;
    std::size_t createdSize;
    int revision;
  };
  std::string_view Id(const Row& row) const {
    return std::string_view(texts_).substr(row.at, row.idSize);
  }

  std::vector<Row> rows_;
  std::string texts_;
  std::size_t next_ = 0;
};

void FloorStore::Set(const ConfigStoreObjectId& id, Json::Value& data, const FloorType& type) {
  Check(id, data, type, TarnConfigStore::SetRules());
  RefuseDuringBoot();
  BindRow(write_, id, type.Version());
  write_.Bind(6, 1);
  write_.Bind(8, text_.Make(data));
  write_.Bind(12, 0);
  write_.Execute();
  write_.Clear();
  RefuseToNotify();
}

void FloorStore::Update(const ConfigStoreObjectId& id, Json::Value& change, const FloorType& type) {
  const Columns& columns = kOneColumns;
  RefuseDuringBoot();
  BindType(getOne_, id);
  getOne_.Bind(4, id.instanceId);
  const bool isUsersAlone = getOne_.Step() && getOne_.IsNull(columns.automatic) &&
                            getOne_.IsNull(columns.cached) && getOne_.IsNull(columns.vital) &&
                            getOne_.IsNull(columns.desired) && !getOne_.IsNull(columns.user);
  if (!isUsersAlone || ReadUpgradeContext() != 0) {
    getOne_.Reset();
    throw std::runtime_error("floor: not an object of the user's alone: " + id.toString());
  }
  Json::Value& data = scratch_.Parse(getOne_.Text(columns.user));
  getOne_.Reset();
  for (auto& member : change.GetObject()) {
    const auto existing = data.FindMember(member.name);
    if (existing == data.MemberEnd() || Json::IsContainer(member.value)) {
      throw std::runtime_error("floor: only single values of members that are there");
    }
    // The change outlives what is made of it here.
    existing->value = member.value.IsString() ? Json::Reference(Json::Text(member.value))
                                              : Json::Value(member.value, scratch_.Pool());
  }
  Check(id, data, type, TarnConfigStore::UpdatedRules(static_cast<unsigned>(Json::Kind::USER)));
  BindRow(update_, id, type.Version());
  update_.Bind(6, text_.Make(data));
  update_.Execute();
  RefuseToNotify();
}

void FloorStore::SetInstances(const ConfigStoreObjectId& id,
                              const std::vector<std::unique_ptr<FloorObject>>& objects,
                              const FloorType& type, Rows rows) {
  RefuseDuringBoot();
  ConfigStoreObjectId instance = id;
  for (const auto& object : objects) {
    instance.instanceId = object->Metadata().instanceId;
    Check(instance, object->Data(), type, TarnConfigStore::SetRules());
  }
  Transaction transaction(*this);
  if (rows == Rows::KEPT) {
    WriteOver(id, type, objects);
  } else {
    WriteFresh(id, type, objects);
  }
  transaction.Commit();
  RefuseToNotify();
}

void FloorStore::WriteOver(const ConfigStoreObjectId& id, const FloorType& type,
                           const std::vector<std::unique_ptr<FloorObject>>& objects) {
  Existing existing(getExisting_, id);
  BindType(deleteAll_, id);
  deleteAll_.Execute();
  BindRow(write_, id, type.Version());
  write_.Bind(6, 1);
  for (const auto& object : objects) {
    write_.Bind(1, object->Metadata().instanceId);
    write_.Bind(8, text_.Make(object->Data()));
    existing.Bind(write_, object->Metadata().instanceId);
    write_.Execute();
  }
  write_.Clear();
}

void FloorStore::WriteFresh(const ConfigStoreObjectId& id, const FloorType& type,
                            const std::vector<std::unique_ptr<FloorObject>>& objects) {
  BindType(deleteAll_, id);
  deleteAll_.Execute();
  BindRow(insert_, id, type.Version());
  for (const auto& object : objects) {
    insert_.Bind(1, object->Metadata().instanceId);
    insert_.Bind(6, text_.Make(object->Data()));
    insert_.Execute();
  }
}

std::size_t FloorStore::Import(const ConfigStoreObjectId& id, std::string_view document,
                               const FloorType& type) {
  RefuseDuringBoot();
  Json::Value& config = scratch_.Parse(document)["config"];
  Json::Value& instances = config[id.component.c_str()][id.group.c_str()][id.key.c_str()];
  ConfigStoreObjectId instance = id;
  for (Json::Value& data : instances.GetArray()) {
    instance.instanceId = Json::Text(data["id"]);
    Check(instance, data, type, TarnConfigStore::SetRules());
  }
  Transaction transaction(*this);
  BindRow(write_, id, type.Version());
  write_.Bind(6, 1);
  write_.Bind(12, 0);
  for (const Json::Value& data : instances.GetArray()) {
    write_.Bind(1, Json::Text(data["id"]));
    write_.Bind(8, text_.Make(data));
    write_.Execute();
  }
  write_.Clear();
  transaction.Commit();
  RefuseToNotify();
  return instances.Size();
}

void FloorStore::Fill(const ConfigStoreObjectId& id, const RowValues& values) {
  BindRow(write_, id, "1.0");
  write_.Bind(6, 1);
  write_.Bind(12, 0);
  int index = 7;
  for (const std::string* value :
       {&values.automatic, &values.user, &values.vital, &values.cached}) {
    if (!value->empty()) {
      write_.Bind(index, *value);
    }
    ++index;
  }
  write_.Execute();
  write_.Clear();
}

}  // namespace Benchmarks
