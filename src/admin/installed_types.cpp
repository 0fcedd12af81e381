#include "tarnconfigstore/type_administration.h"

#include "platform/type_files.h"

#include "admin/type_reports.h"
#include "errors/platform_failures.h"
#include "persistence/connection.h"
#include "persistence/next_boot_records.h"
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

// Nobody could read or change what is stored without its type, or apply or take back what is staged.
void RequireUnused(const ConfigStoreObjectId& type, int stored, std::size_t staged) {
  std::string text;
  const auto count = [&](const char* what, std::size_t number) {
    if (number > 0) {
      text += what + (" of the type " + type.toString()) + ": " + std::to_string(number) + ". ";
    }
  };
  count("Objects stored", static_cast<std::size_t>(stored));
  count("Changes staged for the next boot", staged);
  if (!text.empty()) {
    ThrowFailure(
        text +
        "Removing their type has to be forced: stored objects can then be neither read nor "
        "changed, and staged changes go with it.");
  }
}

void RemoveRows(const ConfigStoreObjectId& type, bool force) {
  const DBStore::ConnectionHandle connection = GetDBStore(DBStore::Type::CURRENT_STORE, true);
  RunUnderTransaction(connection, "RemoveType", [&] {
    const std::size_t staged = ReadStagedOfType(type, connection).size();
    if (!force) {
      RequireUnused(type, CountStoredInstances(type, connection), staged);
    }
    if (staged > 0) {
      ClearRebootRequiredConfigInstances(type, nullptr, connection);
    }
    ReplaceDefaultRows(type, std::string(), {}, connection);
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
    RemoveRows(IdOf(name), force);
    writer.Commit();
  });
}

}  // namespace TarnConfigStore
