#include "persistence/boot_flags.h"

#include "tarnconfigstore/boot_state.h"

#include "errors/raise.h"

namespace TarnConfigStore {

bool IsBootInternal(const DBStore::ConnectionHandle& connection) {
  static const std::string key = "IS_BOOT";
  std::string value;
  if (DBStore::ReadKeyValue(key, &value, connection) != 0) {
    ThrowFailure("Failed to read value from database.");
  }
  return value == "true";
}

bool IsBoot() {
  return IsBootInternal(DBStore::GetConnection(DBStore::Type::CURRENT_STORE, true));
}

}  // namespace TarnConfigStore
