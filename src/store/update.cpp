#include "store/update.h"

#include "persistence/boot_flags.h"
#include "persistence/statements.h"
#include "persistence/write_by_context.h"
#include "store/layer_update.h"
#include "store/under_transaction.h"

namespace TarnConfigStore {
namespace {

UPDATE_CONTEXT UpdateContextOf(const USERDATA_CONTEXT& context) {
  if (context != EXTERNAL) {
    return UPDATE_AUTOMATIC;
  }
  return ReadUpgradeContext() == 0 ? UPDATE_USER : UPDATE_DURING_UPGRADE;
}

class Update {
 public:
  Update(const ObjectHandle& object, const Removals& removals, const SchemaHandle& schema,
         const USERDATA_CONTEXT& context, const DBStore::ConnectionHandle& connection)
      : id_(object->GetConfigStoreObjectId()),
        schema_(schema),
        context_(context),
        connection_(connection),
        change_(object, removals, schema, context) {}

  /// Reads the row, and works out and checks what becomes of it.
  void Prepare() {
    row_ = Read();
    updateContext_ = UpdateContextOf(context_);
    layers_ = change_.Over(row_, updateContext_ == UPDATE_DURING_UPGRADE);
  }

  /// Whether the row is still the one that was read.
  bool IsCurrent() const { return updateContext_ == UpdateContextOf(context_) && row_ == Read(); }

  void Write() const {
    WriteLayersByContext(id_, layers_, schema_->GetVersion(), updateContext_, connection_);
  }

 private:
  RowMap Read() const { return ReadRowMap(connection_, READ_TABLE_CONFIG, id_); }

  const ConfigStoreObjectId& id_;
  const SchemaHandle& schema_;
  const USERDATA_CONTEXT context_;
  const DBStore::ConnectionHandle& connection_;
  LayerUpdate change_;
  RowMap row_;
  UPDATE_CONTEXT updateContext_ = UPDATE_USER;
  ColumnValues layers_;
};

}  // namespace

void UpdateInternal(ConfigStore& store, const ObjectHandle& object, const Removals& removals,
                    const SchemaHandle& schema, const USERDATA_CONTEXT& context,
                    const DBStore::ConnectionHandle& connection) {
  Update update(object, removals, schema, context, connection);
  const DBStore::Turn turn(connection);
  if (DBStore::IsInTransaction(connection)) {
    update.Prepare();
    update.Write();
    return;
  }
  // Where others change the row again and again, they wait in the end.
  constexpr int kAttempts = 4;
  bool written = false;
  for (int attempt = 1; !written; ++attempt) {
    const bool letOthersWait = attempt == kAttempts;
    if (!letOthersWait) {
      update.Prepare();
    }
    RunUnderTransaction(store, connection, "Update", [&] {
      if (letOthersWait) {
        update.Prepare();
      } else if (!update.IsCurrent()) {
        return;
      }
      update.Write();
      written = true;
    });
  }
}

}  // namespace TarnConfigStore
