// By the database layer's own operations alone: any platform whose stores have the table may take
// this.
#include "platform/staged_base.h"

#include "db/layout_statements.h"

#include <charconv>
#include <string_view>

namespace DBStore {
namespace {

using KeyStatement =
    SqlStatement<std::string_view, std::string_view, std::string_view, std::string_view>;

// A store of layout 1 has no such table.
int KeepsBases(const ConnectionHandle& connection, bool& keeps) {
  const StatementHandle statement =
      internal::Prepare(connection, internal::Sql::kFindStagedBases, kWaitLimit);
  const RowCallback note = [](void* context, int, char**, char**) {
    *static_cast<bool*>(context) = true;
    return 0;
  };
  return ExecuteStmt(connection, statement, note, &keeps, kWaitLimit);
}

// Columns in the order of the statement.
int TakeRow(void* context, int /*columns*/, char** values, char** /*names*/) {
  auto& base = *static_cast<StagedBase*>(context);
  const auto text = [&values](int column) -> std::optional<std::string> {
    return values[column] == nullptr ? std::nullopt : std::optional<std::string>(values[column]);
  };
  const auto isSet = [&values](int column) {
    return values[column] != nullptr && std::string_view(values[column]) != "0";
  };
  base.kind = isSet(0) ? StagedBase::Kind::ROW : StagedBase::Kind::NO_ROW;
  base.version = text(1).value_or("");
  base.user = text(2);
  base.pending = text(3);
  base.automatic = text(4);
  base.vital = text(5);
  base.cached = text(6);
  base.confirmed = isSet(7);
  base.creationTime = text(8).value_or("");
  base.modifiedTime = text(9).value_or("");
  const std::string revision = text(10).value_or("");
  std::from_chars(revision.data(), revision.data() + revision.size(), base.revision);
  return 0;
}

}  // namespace

int ReadStagedBase(const TarnConfigStore::ConfigStoreObjectId& id, StagedBase* base,
                   const ConnectionHandle& connection) {
  const Turn turn(connection);
  bool keeps = false;
  if (KeepsBases(connection, keeps) != 0) {
    return 1;
  }
  StagedBase found;
  if (keeps) {
    const StatementHandle statement = KeyStatement::PrepareAndBind(
        connection, internal::Sql::kReadStagedBase, id.component, id.group, id.key, id.instanceId);
    if (ExecuteStmt(connection, statement, TakeRow, &found, kWaitLimit) != 0) {
      return 1;
    }
  }
  *base = std::move(found);
  return 0;
}

}  // namespace DBStore
