#include "persistence/row_map.h"

#include "persistence/statements.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace TarnConfigStore {
namespace {

void RunForType(const DBStore::ConnectionHandle& connection, std::string_view statement,
                const ConfigStoreObjectId& id, DBStore::RowCallback callback, void* context) {
  const DBStore::StatementHandle handle =
      TypeStatement::PrepareAndBind(connection, statement, id.key, id.group, id.component);
  RunReading(connection, handle, callback, context,
             [&id] { return "Read Instances failed for: " + id.toString(); });
}

struct RowReceiver {
  RowMap row;
  const RowVisitor& receive;
};

int HandOn(void* receiver, int count, char** values, char** names) {
  auto& to = *static_cast<RowReceiver*>(receiver);
  to.row.Clear();
  to.row.Put(count, values, names);
  to.receive(to.row);
  return 0;
}

}  // namespace

void RowMap::Clear() {
  columns_.clear();
  text_.clear();
}

std::optional<std::string_view> RowMap::Find(std::string_view column) const {
  for (const Column& candidate : columns_) {
    if (Name(candidate) == column) {
      return std::string_view(text_).substr(candidate.value, candidate.valueLength);
    }
  }
  return std::nullopt;
}

std::optional<std::string_view> RowMap::FindOnly(
    std::initializer_list<std::string_view> columns) const {
  std::optional<std::string_view> only;
  for (const std::string_view column : columns) {
    const std::optional<std::string_view> text = Find(column);
    if (text && only) {
      return std::nullopt;
    }
    only = text ? text : only;
  }
  return only;
}

void RowMap::Put(int count, const char* const* values, const char* const* names) {
  // As much as most rows take; longer ones make it grow.
  constexpr std::size_t kUsualLength = 768;
  if (text_.capacity() < kUsualLength) {
    text_.reserve(kUsualLength);
  }
  columns_.reserve(columns_.size() + static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) {
    if (values[i] == nullptr) {
      continue;
    }
    Column* column = nullptr;
    const std::string_view name = names[i];
    for (Column& existing : columns_) {
      if (Name(existing) == name) {
        column = &existing;
      }
    }
    if (column == nullptr) {
      column = &columns_.emplace_back();
      column->name = static_cast<std::uint32_t>(text_.size());
      column->nameLength = static_cast<std::uint32_t>(name.size());
      text_ += name;
    }
    const std::string_view value = values[i];
    column->value = static_cast<std::uint32_t>(text_.size());
    column->valueLength = static_cast<std::uint32_t>(value.size());
    text_.append(value.data(), value.size() + 1);  // with the NUL that follows it
  }
}

std::int32_t RevisionFrom(const char* text) {
  constexpr int kDecimal = 10;
  constexpr long kLargest = std::numeric_limits<std::int32_t>::max();
  const long revision = text == nullptr ? 0 : std::strtol(text, nullptr, kDecimal);
  return static_cast<std::int32_t>(std::clamp(revision, -kLargest, kLargest));
}

int CollectRowMap(void* rowMap, int count, char** values, char** names) {
  static_cast<RowMap*>(rowMap)->Put(count, values, names);
  return 0;
}

int AppendRowMap(void* rowMapList, int count, char** values, char** names) {
  auto row = std::make_shared<RowMap>();
  row->Put(count, values, names);
  static_cast<RowMapList*>(rowMapList)->push_back(std::move(row));
  return 0;
}

RowMapList ReadRows(const DBStore::ConnectionHandle& connection,
                    const DBStore::StatementHandle& statement, const char* failure) {
  RowMapList rows;
  RunReading(connection, statement, AppendRowMap, &rows, [failure] { return failure; });
  return rows;
}

RowMapList ReadRowMaps(const DBStore::ConnectionHandle& connection, std::string_view statement,
                       const ConfigStoreObjectId& id) {
  RowMapList rows;
  RunForType(connection, statement, id, AppendRowMap, &rows);
  return rows;
}

void ForEachRow(const DBStore::ConnectionHandle& connection, std::string_view statement,
                const ConfigStoreObjectId& id, const RowVisitor& receiver) {
  RowReceiver rows{RowMap(), receiver};
  RunForType(connection, statement, id, HandOn, &rows);
}

void ForEachRow(const DBStore::ConnectionHandle& connection,
                const DBStore::StatementHandle& statement, const char* failure,
                const RowVisitor& receiver) {
  RowReceiver rows{RowMap(), receiver};
  RunReading(connection, statement, HandOn, &rows, [failure] { return failure; });
}

RowMap ReadRowMap(const DBStore::ConnectionHandle& connection, const InstanceStatement& statement,
                  const ConfigStoreObjectId& id) {
  RowMap row;
  const DBStore::StatementHandle handle =
      statement.PrepareAndBind(connection, id.key, id.group, id.component, id.instanceId);
  RunReading(connection, handle, CollectRowMap, &row,
             [&id] { return "Get failed: " + id.toString(); });
  return row;
}

}  // namespace TarnConfigStore
