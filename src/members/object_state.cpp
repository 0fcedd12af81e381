#include "members/object_state.h"

#include "admin/row_views.h"
#include "documents/next_boot_rows.h"
#include "objects/access.h"
#include "objects/generated_ids.h"
#include "persistence/boot_flags.h"
#include "persistence/connection.h"
#include "persistence/next_boot_records.h"
#include "persistence/prefix_rows.h"
#include "persistence/statements.h"
#include "store/staged_content.h"

#include <string_view>
#include <utility>

namespace TarnConfigStore {
namespace {

// The columns by their parts; those that hide others come first.
struct PartColumn {
  ConfigPart part;
  const char* name;
  RowText text;
};
constexpr PartColumn kUserColumn = {ConfigPart::USER, "UserValue", &StoredRow::user};
constexpr PartColumn kPendingColumn = {ConfigPart::PENDING, "DesiredValue", &StoredRow::pending};
constexpr PartColumn kColumnsBelow[] = {
    {ConfigPart::VITAL, "VitalValue", &StoredRow::vital},
    {ConfigPart::CACHED, "CachedValue", &StoredRow::cached},
    {ConfigPart::AUTOMATIC, "AutoConfValue", &StoredRow::automatic}};

class StateReader {
 public:
  StateReader(const ConfigStoreObjectId& id, const SchemaHandle& type)
      : id_(id), type_(type), connection_(GetDBStore(DBStore::Type::CURRENT_STORE, true)) {}

  ObjectState Read() {
    // Outside of the moment, as every read asks for it.
    const int upgradeContext = ReadUpgradeContext();
    ReadAtOneMoment(connection_, [&] {
      row_ = ReadRowMap(connection_, READ_TABLE_CONFIG, id_);
      VisitStoredRow(id_, connection_, [&](const StoredRow& row) { state_.row = row; });
      changes_ = ReadStagedOfType(id_, connection_);
    });
    if (state_.row) {
      state_.modifiedTime = row_.Text("ModifiedTime");
      ReadParts(UserColumn(row_, upgradeContext));
    }
    ReadComing();
    return std::move(state_);
  }

 private:
  void ReadParts(std::string_view userColumn) {
    const bool readsPending = userColumn == kPendingColumn.name;
    const PartColumn& asUser = readsPending ? kPendingColumn : kUserColumn;
    Add(asUser, userColumn.empty() ? PartRole::WAITS : PartRole::READ);
    for (const PartColumn& column : kColumnsBelow) {
      Add(column, PartRole::READ);
    }
    if (readsPending) {
      Add(kUserColumn, PartRole::HIDDEN);
    } else {
      Add(kPendingColumn, PartRole::WAITS);
    }
    state_.read = MergeView(*state_.row, userColumn.empty() ? nullptr : asUser.text, id_, type_);
    WithoutGeneratedIds(state_.read);
  }

  void Add(const PartColumn& column, PartRole role) {
    if (ObjectHandle object = MakeObjectFromRow(row_, column.name, id_, type_)) {
      DropGeneratedIds(Internal::Access::Of(*object).GetRoot());
      state_.parts.push_back({column.part, role, std::move(object)});
    }
  }

  static void WithoutGeneratedIds(const ObjectHandle& object) {
    if (object) {
      Json::ClearGeneratedIds(Internal::Access::Of(*object).GetRoot());
    }
  }

  void ReadComing() {
    const std::optional<StoredRow>& row = state_.row;
    std::optional<StoredRow> coming = row ? std::optional(AfterBoot(*row)) : std::nullopt;
    state_.waits = row && (row->pending || !row->confirmed);
    for (const auto& change : changes_) {
      const NextBootAction action = ActionFromRow(*change);
      if (action != NextBootAction::DELETE && change->Text("Identifier") != id_.instanceId) {
        continue;
      }
      state_.waits = true;
      if (action == NextBootAction::SET) {
        JudgeStagedContent(*change, id_, type_, state_.misfits);
      }
      ApplyStaged(*change, coming);
    }
    state_.goes = row && !coming;
    state_.afterBoot = coming ? MergeView(*coming, &StoredRow::user, id_, type_) : nullptr;
    WithoutGeneratedIds(state_.afterBoot);
  }

  const ConfigStoreObjectId& id_;
  const SchemaHandle& type_;
  const DBStore::ConnectionHandle connection_;
  RowMap row_;
  RowMapList changes_;
  ObjectState state_;
};

}  // namespace

ObjectState ReadState(const ConfigStoreObjectId& id, const SchemaHandle& type) {
  return StateReader(id, type).Read();
}

}  // namespace TarnConfigStore
