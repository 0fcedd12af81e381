// Result rows as maps from column name to text.
#pragma once

#include "tarnconfigstore/object_id.h"

#include "platform/db_store.h"

#include "errors/raise.h"

#include <cstddef>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace TarnConfigStore {

/// One result row: the columns that are not NULL. Rows have a dozen columns, so finding one is a walk.
class RowMap {
 public:
  RowMap() = default;
  RowMap(RowMap&& other) noexcept { Swap(other); }
  RowMap& operator=(RowMap&& other) noexcept {
    Swap(other);
    return *this;
  }
  /// A row that keeps what it holds.
  RowMap(const RowMap& other);
  RowMap& operator=(const RowMap&) = delete;
  ~RowMap() = default;

  /// The column's text, followed by a NUL; nothing when it was NULL or is not part of the row.
  std::optional<std::string_view> Find(std::string_view column) const;
  /// The column's text, or an empty one.
  std::string_view Text(std::string_view column) const { return Find(column).value_or(""); }
  /// The text of the one column among these that has any; nothing where several have, or none.
  std::optional<std::string_view> FindOnly(std::initializer_list<std::string_view> columns) const;
  bool Empty() const;
  /// The same columns in the same order, with the same texts.
  bool operator==(const RowMap& other) const { return Columns() == other.Columns(); }

  /// Puts a whole row in, over what is there already. No name stands twice in a row.
  void Put(int count, const char* const* values, const char* const* names);

  /// Makes it a row that somebody else keeps: valid as long as that stays.
  void Show(int count, const char* const* values, const char* const* names);

 private:
  struct Column {
    std::string_view name;
    std::string_view value;
    bool operator==(const Column&) const = default;
  };

  void Swap(RowMap& other) noexcept;
  std::vector<Column> Columns() const;
  void Keep(const std::vector<Column>& columns);

  // The row as callbacks get it; a value is null where it was NULL.
  std::size_t count_ = 0;
  const char* const* names_ = nullptr;
  const char* const* values_ = nullptr;
  // Of a row that keeps what it holds, all of that.
  std::vector<const char*> namesAndValues_;
  std::unique_ptr<char[]> texts_;
};

/// The rows of a result, in the database's order.
using RowMapList = std::vector<std::shared_ptr<RowMap>>;

/// A revision as the database gives it: 0 for an absent one or no number, and the largest that an
/// object can tell where it is larger.
std::int32_t RevisionFrom(const char* text);

/// Row callbacks for DBStore::ExecuteStmt. The first puts each row into a RowMap, later rows over
/// earlier ones; the second appends each row to a RowMapList.
int CollectRowMap(void* rowMap, int count, char** values, char** names);
int AppendRowMap(void* rowMapList, int count, char** values, char** names);

/// Runs a statement that reads, bound as it is. Readers take every status but 1 for an answer; that
/// one raises ConfigStoreException 2000 with the text that `failure` makes.
template <class MakeText>
void RunReading(const DBStore::ConnectionHandle& connection,
                const DBStore::StatementHandle& statement, DBStore::RowCallback callback,
                void* context, MakeText failure) {
  constexpr int kReadFailed = 1;
  if (DBStore::ExecuteStmt(connection, statement, callback, context, DBStore::kWaitLimit) ==
      kReadFailed) {
    ThrowFailure(failure());
  }
}

/// All rows of such a statement; the failure's text as it is.
RowMapList ReadRows(const DBStore::ConnectionHandle& connection,
                    const DBStore::StatementHandle& statement, const char* failure);

/// Gets rows one after the other, in memory that the next row takes over. What it raises passes
/// through.
using RowVisitor = std::function<void(const RowMap&)>;

/// The same, each row handed on.
void ForEachRow(const DBStore::ConnectionHandle& connection,
                const DBStore::StatementHandle& statement, const char* failure,
                const RowVisitor& receiver);

/// The same for a statement whose three parameters are an identifier's key, group and component.
/// Raises as ReadRowMaps.
void ForEachRow(const DBStore::ConnectionHandle& connection, std::string_view statement,
                const ConfigStoreObjectId& id, const RowVisitor& receiver);

/// All rows of a statement whose three parameters are an identifier's key, group and component.
/// Raises ConfigStoreException 2000 "Read Instances failed for: IDENTIFIER".
RowMapList ReadRowMaps(const DBStore::ConnectionHandle& connection, std::string_view statement,
                       const ConfigStoreObjectId& id);

/// The row of a statement whose four parameters are an identifier's key, group, component and
/// instance id; an empty map when there is none. Raises ConfigStoreException 2000 "Get failed:
/// IDENTIFIER".
RowMap ReadRowMap(const DBStore::ConnectionHandle& connection,
                  const DBStore::SqlStatement<std::string_view, std::string_view, std::string_view,
                                              std::string_view>& statement,
                  const ConfigStoreObjectId& id);

/// The same row, handed on where there is one.
void VisitRow(const DBStore::ConnectionHandle& connection,
              const DBStore::SqlStatement<std::string_view, std::string_view, std::string_view,
                                          std::string_view>& statement,
              const ConfigStoreObjectId& id, const RowVisitor& receiver);

}  // namespace TarnConfigStore
