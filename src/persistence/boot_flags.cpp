#include "persistence/boot_flags.h"

#include "tarnconfigstore/boot_state.h"

#include "platform/made_once.h"
#include "platform/upgrade_context.h"

#include "errors/platform_failures.h"
#include "json/json.h"

#include <string>

namespace TarnConfigStore {
namespace {

// What "BOOT_MODE" holds, besides "0", to which the boot process goes back.
constexpr const char* kModeRemediated = "1";
constexpr const char* kModeChangesStaged = "4";

struct Keys {
  const std::string isBoot = "IS_BOOT";
  const std::string bootMode = "BOOT_MODE";
};
constinit MadeOnce<const Keys> keys;

std::string ReadFlag(const std::string& key, const DBStore::ConnectionHandle& connection) {
  std::string value;
  // Without a connection, the last store error says why there is none.
  if (!connection || DBStore::ReadKeyValue(key, &value, connection) != 0) {
    ThrowFailure("Failed to read value from database.");
  }
  return value;
}

}  // namespace

int ReadUpgradeContext() {
  return WithStoreFailures(GetUpgradeCtx);
}

bool IsBootInternal(const DBStore::ConnectionHandle& connection) {
  return ReadFlag(keys.Get().isBoot, connection) == "true";
}

bool IsBoot() {
  return IsBootInternal(DBStore::GetConnection(DBStore::Type::CURRENT_STORE, true));
}

int GetBootInfo() {
  const auto connection = DBStore::GetConnection(DBStore::Type::CURRENT_STORE, true);
  std::string text;
  Json::Document info;
  if (!connection || DBStore::ReadKeyValue("BOOT_INFO", &text, connection) != 0 ||
      !Json::Parse(text, info)) {
    ThrowFailure("Failed to read BOOT_INFO database.");
  }
  // What is no object, or no integer, raises the JSON assertion.
  const auto type = info.FindMember("type");
  return type == info.MemberEnd() ? 0 : type->value.GetInt();
}

bool IsRemediatedInternal(const DBStore::ConnectionHandle& connection) {
  return ReadFlag(keys.Get().bootMode, connection) == kModeRemediated;
}

void RequireNoRemediation(const DBStore::ConnectionHandle& connection) {
  if (IsRemediatedInternal(connection)) {
    ThrowFailure("Tarn host is being remediated by ORC, cannot set next-boot configuration.");
  }
}

void WriteBootMode(const std::string& mode, const DBStore::ConnectionHandle& connection) {
  if (DBStore::WriteKeyValue(keys.Get().bootMode, mode, connection) != 0) {
    ThrowFailure("Failed to write BootMode to database.");
  }
}

void AnnounceStagedChanges(const DBStore::ConnectionHandle& connection) {
  WriteBootMode(kModeChangesStaged, connection);
}

}  // namespace TarnConfigStore
