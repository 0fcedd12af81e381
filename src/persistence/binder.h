// Binding the parameters of a statement one after the other.
#pragma once

#include "platform/db_store.h"

#include <optional>
#include <string>
#include <string_view>

namespace TarnConfigStore {

/// Binds parameter after parameter, from the first, and remembers whether one could not be bound.
/// What is bound is not copied: it has to live until the statement has run.
class Binder {
 public:
  Binder(const DBStore::ConnectionHandle& connection, const DBStore::StatementHandle& statement)
      : connection_(connection), statement_(statement) {}

  template <class... Texts>
  Binder& Text(const Texts&... texts) {
    (BindText(texts), ...);
    return *this;
  }
  Binder& Number(int value) {
    failed_ |= DBStore::internal::Bind(connection_, statement_, index_, value) != 0;
    return *this;
  }
  /// NULL where there is no text.
  template <class... Values>
  Binder& Nullable(const Values&... values) {
    (BindNullable(values), ...);
    return *this;
  }
  /// Leaves so many parameters as they were bound before.
  Binder& Skip(int count) {
    index_ += count;
    return *this;
  }

  bool IsBound() const { return !failed_; }

  /// Runs the statement, which returns no rows. False when a parameter could not be bound or the
  /// statement failed.
  bool Execute() const {
    return !failed_ && DBStore::ExecuteStmt(connection_, statement_, nullptr, nullptr,
                                            DBStore::kWaitLimit) == 0;
  }

 private:
  void BindText(std::string_view text) {
    failed_ |= DBStore::internal::Bind(connection_, statement_, index_, text, false) != 0;
  }
  void BindNullable(DBStore::NullableSV value) {
    failed_ |= DBStore::internal::Bind(connection_, statement_, index_, value) != 0;
  }
  void BindNullable(const std::string& text) { BindNullable(DBStore::NullableSV(text)); }
  void BindNullable(const std::optional<std::string>& text) {
    BindNullable(text ? DBStore::NullableSV(*text) : DBStore::NullableSV());
  }

  const DBStore::ConnectionHandle& connection_;
  const DBStore::StatementHandle& statement_;
  int index_ = 1;
  bool failed_ = false;
};

}  // namespace TarnConfigStore
