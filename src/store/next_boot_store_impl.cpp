#include "store/next_boot_store_impl.h"

#include "store/not_available.h"
#include "store/under_transaction.h"

#include <utility>

namespace TarnConfigStore {

NextBootStoreImpl::NextBootStoreImpl(DBStore::ConnectionHandle connection)
    : connection_(std::move(connection)) {}

template <class T>
void NextBootStoreImpl::ExecuteUnderTransaction(
    const T& argument, const std::shared_ptr<TarnSchemaStore::SchemaObject>& schema,
    void (*operation)(const T&, const std::shared_ptr<TarnSchemaStore::SchemaObject>&,
                      const DBStore::ConnectionHandle&)) {
  RunUnderTransaction(connection_, "ExecuteUnderTransaction",
                      [&] { operation(argument, schema, connection_); });
}

#define TARN_EXECUTE_UNDER_TRANSACTION(T)                                       \
  template void NextBootStoreImpl::ExecuteUnderTransaction(                     \
      const T&, const std::shared_ptr<TarnSchemaStore::SchemaObject>&,          \
      void (*)(const T&, const std::shared_ptr<TarnSchemaStore::SchemaObject>&, \
               const DBStore::ConnectionHandle&));
TARN_EXECUTE_UNDER_TRANSACTION(std::shared_ptr<ConfigStoreObject>)
TARN_EXECUTE_UNDER_TRANSACTION(ConfigStoreObjectId)
TARN_EXECUTE_UNDER_TRANSACTION(std::vector<std::shared_ptr<ConfigStoreObject>>)
TARN_EXECUTE_UNDER_TRANSACTION(std::shared_ptr<FilterSpecObject>)
#undef TARN_EXECUTE_UNDER_TRANSACTION

std::shared_ptr<ConfigStoreObject> NextBootStoreImpl::Get(const ConfigStoreObjectId&) {
  ThrowNotAvailable("NextBootStore::Get");
}

void NextBootStoreImpl::Set(std::shared_ptr<ConfigStoreObject>) {
  ThrowNotAvailable("NextBootStore::Set");
}

void NextBootStoreImpl::Delete(const ConfigStoreObjectId&) {
  ThrowNotAvailable("NextBootStore::Delete");
}

void NextBootStoreImpl::Reset(const ConfigStoreObjectId&) {
  ThrowNotAvailable("NextBootStore::Reset");
}

void NextBootStoreImpl::SetInstances(std::vector<std::shared_ptr<ConfigStoreObject>>) {
  ThrowNotAvailable("NextBootStore::SetInstances");
}

std::vector<std::shared_ptr<ConfigStoreObject>> NextBootStoreImpl::GetInstances(
    const std::shared_ptr<FilterSpecObject>&) {
  ThrowNotAvailable("NextBootStore::GetInstances");
}

void NextBootStoreImpl::DeleteInstances(const std::shared_ptr<FilterSpecObject>&) {
  ThrowNotAvailable("NextBootStore::DeleteInstances");
}

}  // namespace TarnConfigStore
