#include "persistence/row_map.h"

#include "persistence/statements.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <system_error>
#include <utility>

namespace TarnConfigStore {
namespace {

void RunForType(const DBStore::ConnectionHandle& connection, std::string_view statement,
                const ConfigStoreObjectId& id, DBStore::RowCallback callback, void* context) {
  const DBStore::StatementHandle handle =
      TypeStatement::PrepareAndBind(connection, statement, id.key, id.group, id.component);
  RunReading(connection, handle, callback, context,
             [&id] { return "Read Instances failed for: " + id.toString(); });
}

void RunForInstance(const DBStore::ConnectionHandle& connection, const InstanceStatement& statement,
                    const ConfigStoreObjectId& id, DBStore::RowCallback callback, void* context) {
  const DBStore::StatementHandle handle =
      statement.PrepareAndBind(connection, id.key, id.group, id.component, id.instanceId);
  RunReading(connection, handle, callback, context,
             [&id] { return "Get failed: " + id.toString(); });
}

struct RowReceiver {
  RowMap row;
  const RowVisitor& receive;
};

int HandOn(void* receiver, int count, char** values, char** names) {
  auto& to = *static_cast<RowReceiver*>(receiver);
  to.row.Show(count, values, names);
  to.receive(to.row);
  return 0;
}

}  // namespace

RowMap::RowMap(const RowMap& other) {
  Keep(other.Columns());
}

void RowMap::Swap(RowMap& other) noexcept {
  std::swap(count_, other.count_);
  std::swap(names_, other.names_);
  std::swap(values_, other.values_);
  namesAndValues_.swap(other.namesAndValues_);
  texts_.swap(other.texts_);
}

std::optional<std::string_view> RowMap::Find(std::string_view column) const {
  // Most names differ in their first letter.
  for (std::size_t i = 0; i < count_ && !column.empty(); ++i) {
    if (names_[i][0] == column[0] && std::strncmp(names_[i], column.data(), column.size()) == 0 &&
        names_[i][column.size()] == '\0') {
      return values_[i] == nullptr ? std::nullopt : std::optional<std::string_view>(values_[i]);
    }
  }
  return std::nullopt;
}

bool RowMap::Empty() const {
  return std::all_of(values_, values_ + count_, [](const char* value) { return value == nullptr; });
}

std::vector<RowMap::Column> RowMap::Columns() const {
  std::vector<Column> columns;
  for (std::size_t i = 0; i < count_; ++i) {
    if (values_[i] != nullptr) {
      columns.push_back({names_[i], values_[i]});
    }
  }
  return columns;
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
  RowMap row;
  row.Show(count, values, names);
  std::vector<Column> columns = row.Columns();
  for (const Column& earlier : Columns()) {
    if (!row.Find(earlier.name)) {
      columns.push_back(earlier);
    }
  }
  row.Keep(columns);
  *this = std::move(row);
}

void RowMap::Keep(const std::vector<Column>& columns) {
  std::size_t size = 0;
  for (const Column& column : columns) {
    size += column.name.size() + column.value.size() + 2;
  }
  texts_ = std::make_unique_for_overwrite<char[]>(size);
  namesAndValues_.resize(2 * columns.size());
  count_ = columns.size();
  names_ = namesAndValues_.data();
  values_ = names_ + count_;
  char* next = texts_.get();
  const auto keep = [&next](std::string_view text) {
    char* const begin = next;
    next = std::copy(text.begin(), text.end(), begin);
    *next++ = '\0';
    return begin;
  };
  for (std::size_t i = 0; i < count_; ++i) {
    namesAndValues_[i] = keep(columns[i].name);
    namesAndValues_[count_ + i] = keep(columns[i].value);
  }
}

void RowMap::Show(int count, const char* const* values, const char* const* names) {
  count_ = static_cast<std::size_t>(count);
  names_ = names;
  values_ = values;
}

std::int32_t RevisionFrom(const char* text) {
  constexpr int kDecimal = 10;
  constexpr long kLargest = std::numeric_limits<std::int32_t>::max();
  const std::string_view digits = text == nullptr ? "" : text;
  std::int32_t usual = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), usual);
  if (error == std::errc() && *end == '\0' && usual >= 0) {
    return usual;
  }
  const long revision = std::strtol(digits.data(), nullptr, kDecimal);
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
  RunForInstance(connection, statement, id, CollectRowMap, &row);
  return row;
}

void VisitRow(const DBStore::ConnectionHandle& connection, const InstanceStatement& statement,
              const ConfigStoreObjectId& id, const RowVisitor& receiver) {
  RowReceiver rows{RowMap(), receiver};
  RunForInstance(connection, statement, id, HandOn, &rows);
}

}  // namespace TarnConfigStore
