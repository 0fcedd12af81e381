#include "tarnconfigstore/type_administration.h"

#include "platform/type_files.h"

#include "admin/stored_rows.h"
#include "admin/type_reports.h"
#include "errors/platform_failures.h"
#include "errors/raise.h"
#include "persistence/connection.h"
#include "store/under_transaction.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace TarnConfigStore {
namespace {

using TarnSchemaStore::TypeName;
using TypeFiles::KeptType;

// Appends what is to be said of a type's rows.
void Report(RowPlan& plan, std::vector<RowReport>& reports) {
  reports.insert(reports.end(), std::make_move_iterator(plan.reports.begin()),
                 std::make_move_iterator(plan.reports.end()));
}

RowPlan Plan(const KeptType& type, const DBStore::ConnectionHandle& connection) {
  const ConfigStoreObjectId id = IdOf(type.name);
  return CountStoredInstances(id, connection) == 0
             ? RowPlan()
             : PlanUpgrade(id, TypeFiles::Load(type), connection);
}

std::vector<KeptType> TypesOf(const TypeName& name) {
  if (name == TypeName()) {
    return TypeFiles::ReadAll();
  }
  std::optional<KeptType> type = TypeFiles::Read(name);
  if (!type) {
    ThrowException<ConfigStoreException>(CS_SCHEMA_NOT_FOUND, IdOf(name).toString());
  }
  return {std::move(*type)};
}

}  // namespace

std::vector<RowReport> UpgradeRows(const std::string& component, const std::string& group,
                                   const std::string& key, bool checkOnly) {
  std::vector<RowReport> reports;
  WithStoreFailures([&] {
    const std::vector<KeptType> types = TypesOf({component, group, key});
    const DBStore::ConnectionHandle connection = GetDBStore(DBStore::Type::CURRENT_STORE, true);
    if (checkOnly) {
      for (const KeptType& type : types) {
        RowPlan plan = Plan(type, connection);
        Report(plan, reports);
      }
      return;
    }
    // Held so that nobody installs other types meanwhile; what they became until then counts.
    TypeFiles::TypeWriter writer;
    RunUnderTransaction(connection, "UpgradeRows", [&] {
      for (const KeptType& known : types) {
        if (const std::optional<KeptType> type = writer.Read(known.name)) {
          RowPlan plan = Plan(*type, connection);
          WriteChanges(IdOf(type->name), plan, connection);
          Report(plan, reports);
        }
      }
    });
  });
  return reports;
}

}  // namespace TarnConfigStore
