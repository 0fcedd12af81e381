#include "tarnconfigstore/key_values.h"

#include "platform/db_store.h"
#include "platform/host_paths.h"

#include "errors/raise.h"

namespace TarnConfigStore {
namespace {

DBStore::ConnectionHandle Connect() {
  DBStore::ConnectionHandle connection = DBStore::GetConnection(DBStore::Type::CURRENT_STORE, true);
  if (!connection) {
    ThrowException<ConfigStoreException>(CS_STORE_CONNECTION_FAILED, HostPaths::kStore);
  }
  return connection;
}

}  // namespace

void SetKeyValue(const std::string& key, const std::string& value) {
  if (DBStore::WriteKeyValue(key, value, Connect()) != 0) {
    ThrowFailure("Failed to write KV table for key: " + key);
  }
}

std::string GetKeyValue(const std::string& key) {
  std::string value;
  if (DBStore::ReadKeyValue(key, &value, Connect()) != 0) {
    ThrowFailure("Failed to read KV table for key: " + key);
  }
  return value;
}

}  // namespace TarnConfigStore
