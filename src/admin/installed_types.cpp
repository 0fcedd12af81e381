#include "tarnconfigstore/type_administration.h"

#include "platform/type_files.h"

#include "admin/type_reports.h"
#include "errors/platform_failures.h"
#include "persistence/connection.h"
#include "persistence/type_rows.h"
#include "store/under_transaction.h"

namespace TarnConfigStore {
namespace {

std::string FlagsOf(const TarnSchemaStore::SchemaObject& type) {
  std::string flags;
  const auto add = [&flags](bool set, const char* name) {
    if (set) {
      flags.append(flags.empty() ? "" : " ").append(name);
    }
  };
  add(type.IsRebootRequired(), "rebootRequired");
  add(type.IsBootAccessible(), "bootAccessible");
  add(type.IsConfirmedDuringUpgrade(), "confirmedDuringUpgrade");
  add(type.GetValueType() == "tarn-shared", "shared");
  return flags;
}

[[noreturn]] void FailToFind(const TarnSchemaStore::TypeName& name) {
  ThrowException<ConfigStoreException>(CS_SCHEMA_NOT_FOUND, IdOf(name).toString());
}

void RemoveShippedObjects(const TarnSchemaStore::TypeName& name, bool force) {
  const DBStore::ConnectionHandle connection = GetDBStore(DBStore::Type::CURRENT_STORE, true);
  RunUnderTransaction(connection, "RemoveType", [&] {
    const int stored = CountStoredInstances(IdOf(name), connection);
    if (stored > 0 && !force) {
      ThrowFailure("Objects stored of the type " + IdOf(name).toString() + ": " +
                   std::to_string(stored) +
                   ". Removing their type, without which they can be neither "
                   "read nor changed, has to be forced.");
    }
    ReplaceDefaultRows(IdOf(name), std::string(), {}, connection);
  });
}

}  // namespace

std::vector<InstalledType> ListTypes() {
  return WithStoreFailures([] {
    std::vector<InstalledType> types;
    for (const TypeFiles::KeptType& kept : TypeFiles::ReadAll()) {
      const auto type = TypeFiles::Load(kept);
      types.push_back({kept.name.component, kept.name.group, kept.name.key, kept.version,
                       FlagsOf(*type), type->IsNonSingleton()});
    }
    return types;
  });
}

std::string GetTypeFile(const std::string& component, const std::string& group,
                        const std::string& key) {
  const TarnSchemaStore::TypeName name{component, group, key};
  std::optional<TypeFiles::KeptType> kept =
      WithStoreFailures([&name] { return TypeFiles::Read(name); });
  if (!kept) {
    FailToFind(name);
  }
  return std::move(kept->text);
}

// As in an installation, the schema goes last.
void RemoveType(const std::string& component, const std::string& group, const std::string& key,
                bool force) {
  const TarnSchemaStore::TypeName name{component, group, key};
  WithStoreFailures([&] {
    TypeFiles::TypeWriter writer;
    if (!writer.Read(name)) {
      FailToFind(name);
    }
    writer.Remove(name);
    RemoveShippedObjects(name, force);
    writer.Commit();
  });
}

}  // namespace TarnConfigStore
