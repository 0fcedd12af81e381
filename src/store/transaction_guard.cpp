#include "tarnconfigstore/config_store.h"

#include "errors/raise.h"

namespace TarnConfigStore {

ConfigStoreTransaction::ConfigStoreTransaction(std::shared_ptr<ConfigStore>& store)
    : store_(store), active_(true) {
  if (!store_) {
    ThrowFailure("Failed to use NULL as the store");
  }
  if (store_->BeginTransaction() != 0) {
    ThrowFailure("Failed to start a transaction.");
  }
}

ConfigStoreTransaction::~ConfigStoreTransaction() {
  if (active_) {
    store_->CancelTransaction();
  }
}

int ConfigStoreTransaction::Commit() {
  const int status = store_->CommitTransaction();
  active_ = false;
  return status;
}

int ConfigStoreTransaction::Cancel() {
  const int status = store_->CancelTransaction();
  active_ = false;
  return status;
}

}  // namespace TarnConfigStore
