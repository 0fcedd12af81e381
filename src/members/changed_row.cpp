#include "members/changed_row.h"

#include "platform/logger.h"

#include "admin/row_views.h"
#include "errors/raise.h"
#include "notify/notification.h"
#include "objects/access.h"
#include "objects/schema_lookup.h"
#include "persistence/boot_flags.h"
#include "persistence/connection.h"
#include "persistence/delete_config.h"
#include "persistence/row_objects.h"
#include "persistence/write_config.h"
#include "persistence/write_values.h"
#include "store/boot_context.h"
#include "store/config_store_impl.h"
#include "store/trace.h"
#include "store/under_transaction.h"
#include "validation/guards.h"

#include <utility>

namespace TarnConfigStore {
namespace {

RowText TextOf(ConfigPart part) {
  switch (part) {
    case ConfigPart::USER:
      return &StoredRow::user;
    case ConfigPart::AUTOMATIC:
      return &StoredRow::automatic;
    case ConfigPart::VITAL:
      return &StoredRow::vital;
    case ConfigPart::CACHED:
      return &StoredRow::cached;
    case ConfigPart::PENDING:
      break;
  }
  ThrowArgument("The pending part cannot be taken back: take the staged change back.");
}

unsigned KindOf(ConfigPart part) {
  const Json::Kind kind = part == ConfigPart::VITAL    ? Json::Kind::VITAL
                          : part == ConfigPart::CACHED ? Json::Kind::CACHED
                                                       : Json::Kind::USER;
  return static_cast<unsigned>(kind);
}

void RequireChangeable(const ConfigStoreObjectId& id, const SchemaHandle& type,
                       std::optional<ConfigPart> part) {
  ValidateCsoId(id, type);
  if (part) {
    TextOf(*part);
  }
  if (type->IsRebootRequired()) {
    ThrowRefusal(
        "Changes of this type take effect at the next boot: stage the object as it is to be "
        "(NextBootStore) instead.");
  }
}

bool HoldsNothing(const StoredRow& row) {
  return !row.user && !row.automatic && !row.vital && !row.cached && !row.pending;
}

StoredRow ReadRow(const ConfigStoreObjectId& id, const DBStore::ConnectionHandle& connection) {
  StoredRow stored;
  stored.instanceId = id.instanceId;
  VisitStoredRow(id, connection, [&](const StoredRow& row) { stored = row; });
  return stored;
}

}  // namespace

std::optional<std::string>& ChangedRow::Text(ConfigPart part) {
  return row.*TextOf(part);
}

void ChangedRow::Put(ConfigPart part, std::optional<std::string> text) {
  Text(part) = std::move(text);
  written |= KindOf(part);
  changesUser = changesUser || part == ConfigPart::USER;
}

ObjectHandle ChangedRow::Read() const {
  return MergeView(row, &StoredRow::user, id, type);
}

ChangeOutcome ChangeRow(
    ConfigStore* store, const ConfigStoreObjectId& id, const char* operation,
    std::optional<ConfigPart> part,
    const std::function<bool(ChangedRow&, const DBStore::ConnectionHandle&)>& change) {
  const USERDATA_CONTEXT context = part == ConfigPart::AUTOMATIC ? AUTO_CONFIG : EXTERNAL;
  LogStoreCall(CSLogger::kWriteCall, operation, id, context);
  const SchemaHandle type = FindSchema(id);
  RequireChangeable(id, type, part);
  const DBStore::ConnectionHandle connection =
      store == nullptr ? GetDBStore(DBStore::Type::CURRENT_STORE, true) : ConnectionOf(*store);
  ChangeOutcome outcome;
  RunUnderTransaction(connection, operation, [&] {
    const int upgradeContext = ReadUpgradeContext();
    const bool duringUpgrade = upgradeContext != 0;
    const StoredRow before = ReadRow(id, connection);
    ChangedRow changed{id, type, before};
    StoredRow& row = changed.row;
    if (duringUpgrade && row.pending) {
      row.user = row.pending;
    }
    if (!change(changed, connection)) {
      return;
    }
    if ((changed.written & KindOf(ConfigPart::USER)) != 0 && IsClosedDuringBoot(type, connection)) {
      checkUserContext(true, context);
    }
    if (changed.changesUser) {
      row.pending.reset();
      // The rest of an unconfirmed part waits on, as after an update.
      row.confirmed =
          changed.replacesUser
              ? AreConfirmedAtOnce(type->IsConfirmedDuringUpgrade() || !row.user, upgradeContext)
              : row.confirmed || duringUpgrade || !row.user;
    } else {
      row.user = before.user;
    }
    row.version = type->GetVersion();
    outcome.dropsPending = before.pending && !row.pending && !duringUpgrade;
    if (HoldsNothing(row)) {
      DeleteInternal(id, connection);
      outcome.fate = RowFate::REMOVED;
    } else {
      ImportedRows(connection).Write(id, row, std::nullopt, 1);
      outcome.fate = RowFate::WRITTEN;
    }
  });
  if (outcome.fate != RowFate::LEFT) {
    NotifyIfAllowlisted(id, connection);
  }
  return outcome;
}

bool ChangePart(ChangedRow& row, ConfigPart part,
                const std::function<bool(ConfigStoreObjectImpl&)>& change) {
  const std::optional<std::string>& text = row.Text(part);
  if (!text) {
    return false;
  }
  const ObjectHandle object = MakeObject(*text, row.id, row.type);
  ConfigStoreObjectImpl& data = Internal::Access::Of(*object);
  if (!change(data)) {
    return false;
  }
  const bool isEmpty = row.type->GetSchemaPlace().HoldsNothingBesideId(data.GetRoot());
  row.Put(part, isEmpty ? std::nullopt : std::optional(data.GetSerializedData()));
  return true;
}

}  // namespace TarnConfigStore
