#include "store/config_store_impl.h"

#include "tarnconfigstore/held_rows.h"

#include "platform/held_rows.h"

#include "errors/raise.h"
#include "persistence/connection.h"
#include "store/boot_context.h"
#include "store/next_boot_store_impl.h"

#include <utility>

namespace TarnConfigStore {
namespace {

// The database layer's answer that it will not cancel a nested transaction.
constexpr int kNestedCancelRefused = 1;

}  // namespace

ConfigStore::~ConfigStore() = default;

std::shared_ptr<ConfigStore> ConfigStore::GetStore(const std::string& storeNamespace) {
  if (storeNamespace != sGlobalNamespace) {
    ThrowArgument("Invalid value for namespace.");
  }
  return std::make_shared<ConfigStoreImpl>(GetDBStore(DBStore::Type::CURRENT_STORE, true));
}

ConfigStoreImpl::ConfigStoreImpl(DBStore::ConnectionHandle connection)
    : connection_(std::move(connection)) {}

ConfigStoreImpl::~ConfigStoreImpl() = default;

void SetRowHolding(bool hold) noexcept {
  DBStore::SetRowHolding(hold);
}

const DBStore::ConnectionHandle& ConnectionOf(ConfigStore& store) {
  const auto* const own = dynamic_cast<ConfigStoreImpl*>(&store);
  if (own == nullptr) {
    ThrowArgument("The store has not been made by ConfigStore::GetStore.");
  }
  return own->connection_;
}

int ConfigStoreImpl::BeginTransaction() {
  return DBStore::BeginTransaction(connection_);
}

int ConfigStoreImpl::CommitTransaction() {
  if (DBStore::CommitTransaction(connection_) != 0) {
    ThrowFailure("Commit transaction failed.");
  }
  return 0;
}

int ConfigStoreImpl::CancelTransaction() noexcept {
  const int status = DBStore::CancelTransaction(connection_);
  if (status == kNestedCancelRefused) {
    // Leaves a function that does not throw, which ends the process: the outer commit would make
    // durable what the caller meant to undo.
    ThrowFailure("Failed to cancel nested transaction");
  }
  return status;
}

std::shared_ptr<NextBootStore> ConfigStoreImpl::GetNextBootStore() {
  RequireNextBootStore(connection_);

  return std::make_shared<NextBootStoreImpl>(connection_);
}

}  // namespace TarnConfigStore
