#include "documents/reference_drift.h"

#include "platform/logger.h"

#include "documents/drift_builder.h"
#include "documents/next_boot_rows.h"
#include "json/instance_ids.h"
#include "objects/schema_lookup.h"
#include "persistence/connection.h"
#include "persistence/next_boot_records.h"
#include "persistence/prefix_rows.h"
#include "persistence/read_default.h"
#include "persistence/statements.h"

#include <algorithm>
#include <map>
#include <memory>
#include <tuple>

namespace TarnConfigStore {
namespace {

struct States {
  std::shared_ptr<const StoredRow> now;
  std::optional<StoredRow> reference;
};

// The rows under a prefix, each beside what it is compared with.
class Reference {
 public:
  Reference(ReferenceState state, const ConfigStoreObjectId& prefix,
            const DBStore::ConnectionHandle& connection)
      : state_(state), prefix_(prefix), connection_(connection) {}

  void Read() {
    ForEachRowUnder(prefix_, LIST_STORED, connection_, [this](const RowMap& row) {
      const ConfigStoreObjectId id = IdFromRow(row);
      if (const SchemaHandle type = TypeOf(id)) {
        VisitStoredRow(id, connection_, [&](const StoredRow& stored) {
          objects_.emplace(
              id, States{std::make_shared<const StoredRow>(stored), ReferenceOf(stored, type)});
        });
      } else {
        LogNotCompared(id);
      }
    });
    if (state_ == ReferenceState::SHIPPED) {
      ReadShipped();
    } else if (state_ == ReferenceState::NEXT_BOOT) {
      ReadStaged();
    }
  }

  std::vector<DriftObject> Differences(bool reveal) {
    DriftBuilder builder(state_ != ReferenceState::NEXT_BOOT, reveal);
    std::vector<DriftObject> found;
    for (auto& [id, states] : objects_) {
      using Step = DocumentPlan::Step;
      DriftObject object =
          builder.Of({states.reference ? Step::WRITE : Step::REMOVE, id, TypeOf(id),
                      std::move(states.now), states.reference.value_or(StoredRow())});
      std::vector<DriftMember> members = object.GetMembers();
      // What the user has not set reads as its default.
      std::erase_if(members, [this](const DriftMember& member) {
        return state_ == ReferenceState::DEFAULTS && (!member.found || member.pointer.empty());
      });
      if (!members.empty()) {
        found.emplace_back(id, object.GetKind(), std::move(members));
      }
    }
    return found;
  }

 private:
  // Nobody knows its parts, nor what of it is secret.
  static void LogNotCompared(const ConfigStoreObjectId& id) {
    CSLogger::Log(CSLogger::kProblem, "Not compared, its type is not installed: %s",
                  id.toString().c_str());
  }

  SchemaHandle TypeOf(const ConfigStoreObjectId& id) { return FindSchema(schemas_, id); }

  std::optional<StoredRow> ReferenceOf(const StoredRow& stored, const SchemaHandle& type) const {
    StoredRow row = stored;
    switch (state_) {
      case ReferenceState::SHIPPED:
        row.user.reset();
        break;
      case ReferenceState::DEFAULTS:
        row.user = stored.user ? DefaultsOf(*type) : std::nullopt;
        break;
      case ReferenceState::NEXT_BOOT:
        return AfterBoot(stored);
    }
    return row;
  }

  static std::optional<std::string> DefaultsOf(const TarnSchemaStore::SchemaObject& type) {
    std::string text = "{}";
    if (const auto defaults = type.GetDefaults()) {
      Json::Serialize(*defaults->GetJsonValuePtr(), text);
    }
    return text;
  }

  void ReadShipped() {
    ConfigStoreObjectId typePrefix = prefix_;
    typePrefix.instanceId.clear();
    for (const TarnSchemaStore::TypeName& type : schemas_->GetTypes()) {
      const ConfigStoreObjectId typeId(type.key, type.group, type.component);
      if (!IsUnder(typePrefix, typeId)) {
        continue;
      }
      for (const auto& row : GetDefaultUserConfigMapList(typeId, connection_)) {
        ConfigStoreObjectId id = typeId;
        id.instanceId = row->Text("Identifier");
        const auto value = row->Find("Value");
        if (!value || !IsUnder(prefix_, id)) {
          continue;
        }
        States& states = objects_[id];
        if (!states.reference) {
          states.reference.emplace().instanceId = id.instanceId;
        }
        states.reference->user = *value;
      }
    }
  }

  // In the order in which it is applied.
  void ReadStaged() {
    ForEachRowUnder(prefix_, READ_STAGED_RECORDS, connection_, [this](const RowMap& row) {
      const ConfigStoreObjectId id = IdFromRow(row);
      switch (ActionFromRow(row)) {
        case NextBootAction::DELETE:
          for (auto& [other, states] : objects_) {
            if (IsSameType(other, id)) {
              ApplyStaged(row, states.reference);
            }
          }
          break;
        case NextBootAction::DELETE_INSTANCE:
          if (const auto known = objects_.find(id); known != objects_.end()) {
            ApplyStaged(row, known->second.reference);
          }
          break;
        case NextBootAction::SET:
          if (TypeOf(id)) {
            ApplyStaged(row, objects_[id].reference);
          } else {
            LogNotCompared(id);
          }
          break;
      }
    });
  }

  const ReferenceState state_;
  const ConfigStoreObjectId& prefix_;
  const DBStore::ConnectionHandle& connection_;
  SchemaCacheHandle schemas_ = TarnSchemaStore::SchemaStore::GetCache();
  std::map<ConfigStoreObjectId, States, InOrderOfIds> objects_;
};

}  // namespace

bool InOrderOfIds::operator()(const ConfigStoreObjectId& a, const ConfigStoreObjectId& b) const {
  return std::tie(a.component, a.group, a.key, a.instanceId) <
         std::tie(b.component, b.group, b.key, b.instanceId);
}

std::vector<DriftObject> FindDriftFrom(ReferenceState state, const ConfigStoreObjectId& prefix,
                                       bool reveal, const DBStore::ConnectionHandle& connection) {
  Reference reference(state, prefix, connection);
  reference.Read();
  return reference.Differences(reveal);
}

std::vector<DriftObject> ComputeDriftFrom(ReferenceState state, const DriftOptions& options) {
  CSLogger::Log(CSLogger::kTrace, "%s invoked", "ComputeDriftFrom");
  const DBStore::ConnectionHandle connection = GetDBStore(DBStore::Type::CURRENT_STORE, true);
  Reference reference(state, options.prefix, connection);
  ReadAtOneMoment(connection, [&] { reference.Read(); });
  return reference.Differences(options.reveal);
}

}  // namespace TarnConfigStore
