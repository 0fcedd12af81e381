#include "persistence/prefix_rows.h"

#include "errors/raise.h"
#include "persistence/statements.h"

#include <cstddef>

namespace TarnConfigStore {
namespace {

constexpr const char* kFailure = "Get store rows failed.";

// The fields of an identifier, the most general one first.
std::array<const std::string*, 4> FieldsOf(const ConfigStoreObjectId& id) {
  return {&id.component, &id.group, &id.key, &id.instanceId};
}

}  // namespace

bool IsUnder(const ConfigStoreObjectId& prefix, const ConfigStoreObjectId& id) {
  const auto wanted = FieldsOf(prefix);
  const auto own = FieldsOf(id);
  for (std::size_t i = 0; i < wanted.size() && !wanted[i]->empty(); ++i) {
    if (*wanted[i] != *own[i]) {
      return false;
    }
  }
  return true;
}

void ForEachRowUnder(const ConfigStoreObjectId& prefix, const PrefixStatements& statements,
                     const DBStore::ConnectionHandle& connection, const RowVisitor& visit) {
  std::array<std::string_view, 4> fields;
  std::size_t count = 0;
  for (const std::string* field : FieldsOf(prefix)) {
    if (field->empty()) {
      break;
    }
    fields[count++] = *field;
  }
  const DBStore::StatementHandle statement =
      DBStore::internal::Prepare(connection, statements[count], DBStore::kWaitLimit);
  int index = 1;
  for (std::size_t i = 0; i < count; ++i) {
    if (DBStore::internal::Bind(connection, statement, index, fields[i], false) != 0) {
      ThrowFailure(kFailure);
    }
  }
  ForEachRow(connection, statement, kFailure, visit);
}

void ReadAtOneMoment(const DBStore::ConnectionHandle& connection,
                     const std::function<void()>& steps) {
  // As long as one statement is being read, the connection sees no later state of the database.
  const DBStore::StatementHandle statement =
      DBStore::internal::Prepare(connection, READ_SOMETHING, DBStore::kWaitLimit);
  bool ran = false;
  ForEachRow(connection, statement, kFailure, [&](const RowMap& /*row*/) {
    ran = true;
    steps();
  });
  if (!ran) {
    ThrowFailure(kFailure);
  }
}

}  // namespace TarnConfigStore
