// The schema store's tables as "ss" on a connection to the current store.
#include "db/database_file.h"
#include "db/last_error.h"
#include "db/layout.h"
#include "db/store_connection.h"
#include "db/testing_hook.h"

#include <sqlite3.h>

namespace DBStore {
namespace {

constexpr const char* kAttach = "ATTACH ?1 AS ss";
constexpr const char* kDetach = "DETACH ss";

// For reading only: a transaction on the store must not lock the types against being changed.
std::string ReadOnlyUri(const std::string& path) {
  constexpr const char* kHex = "0123456789ABCDEF";
  std::string uri = "file:";
  for (const char letter : path) {
    const auto byte = static_cast<unsigned char>(letter);
    const bool plain = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
                       (byte >= '0' && byte <= '9') || byte == '/' || byte == '-' || byte == '.' ||
                       byte == '_';
    if (plain) {
      uri += letter;
    } else {
      uri.append({'%', kHex[byte >> 4], kHex[byte & 15]});
    }
  }
  return uri += "?mode=ro";
}

}  // namespace

int StoreConnection::AttachSchemaStore() {
  const Guard guard(lock_);
  if (broken_) {
    return RefuseGone("attaching the schema store");
  }
  if (!attached_) {
    // Opening it the usual way tells what is wrong with it, and ends what a killed writer left half
    // done.
    const internal::DatabaseFile types =
        internal::OpenDatabase(internal::SchemaStoreLayout(), true);
    if (!types) {
      return SQLITE_CANTOPEN;
    }
    const std::string uri = ReadOnlyUri(sqlite3_db_filename(types.handle.get(), "main"));
    sqlite3_stmt* statement = nullptr;
    int code = sqlite3_prepare_v2(file_.handle.get(), kAttach, -1, &statement, nullptr);
    if (code == SQLITE_OK) {
      sqlite3_bind_text64(statement, 1, uri.data(), uri.size(), SQLITE_STATIC, SQLITE_UTF8);
      code = sqlite3_step(statement);
      sqlite3_finalize(statement);
    }
    if (code != SQLITE_DONE) {
      return Report(code, "attaching the schema store");
    }
    attached_ = true;
  }
  ++attachments_;
  return SQLITE_OK;
}

int StoreConnection::DetachSchemaStore() {
  const Guard guard(lock_);
  if (attachments_ == 0) {
    internal::ReportFailure(ErrorKind::MISUSE, SQLITE_MISUSE,
                            {fixedPath_, ": the schema store is not attached"});
    return SQLITE_MISUSE;
  }
  // SQLite cannot detach what an open transaction has read: it is then detached when that ends.
  if (--attachments_ > 0 || depth_ > 0 || !IsOpen()) {
    return SQLITE_OK;
  }
  return Detach();
}

int StoreConnection::Detach() noexcept {
  const int code = sqlite3_exec(file_.handle.get(), kDetach, nullptr, nullptr, nullptr);
  if (code != SQLITE_OK) {
    return Report(code, "detaching the schema store");
  }
  attached_ = false;
  return SQLITE_OK;
}

int AttachSchemaStore(const ConnectionHandle& connection) {
  StoreConnection* const usable = internal::Usable(connection);
  if (usable == nullptr) {
    return SQLITE_MISUSE;
  }
  const int status = internal::AskHook(testing::Operation::ATTACH);
  return status != 0 ? status : usable->AttachSchemaStore();
}

int DetachSchemaStore(const ConnectionHandle& connection) {
  StoreConnection* const usable = internal::Usable(connection);
  if (usable == nullptr) {
    return SQLITE_MISUSE;
  }
  const int status = internal::AskHook(testing::Operation::DETACH);
  return status != 0 ? status : usable->DetachSchemaStore();
}

}  // namespace DBStore
