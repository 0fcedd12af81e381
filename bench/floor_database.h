// SQLite by hand: a database with the settings that the library's own connections have, and
// statements that are prepared once.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace Benchmarks {

/// How a host's two databases are known.
inline constexpr std::int64_t kStoreMark = 0x54435331;
inline constexpr std::int64_t kStoreLayout = 2;
inline constexpr std::int64_t kSchemaStoreMark = 0x54535331;
inline constexpr std::int64_t kSchemaStoreLayout = 1;

/// Parameters: component, group, key.
inline constexpr const char* kReadType =
    "SELECT Document FROM Types WHERE Component = ? AND ConfigGroup = ? AND Name = ?";

/// An open database. Everything here raises std::runtime_error with SQLite's text on failure. Used
/// by one thread.
class FloorDatabase {
 public:
  enum class Access { READ, WRITE };

  /// Opens an existing database; its mark and layout version are checked, as the library does.
  FloorDatabase(const std::string& path, Access access, std::int64_t applicationId,
                std::int64_t layout);

  void Run(const char* sql);
  bool IsInTransaction() const noexcept;

 private:
  friend class FloorStatement;
  struct Closer {
    void operator()(sqlite3* database) const noexcept;
  };
  std::int64_t ReadNumber(const char* sql);

  std::unique_ptr<sqlite3, Closer> database_;
};

/// A statement, prepared at its first use and run as often as one likes: bind, step, read columns,
/// Reset. The database and the text have to outlive it.
class FloorStatement {
 public:
  FloorStatement(const FloorDatabase& database, std::string_view sql)
      : database_(database), sql_(sql) {}

  /// Texts are not copied: they have to live until Reset.
  void Bind(int index, std::string_view text);
  void Bind(int index, int number);
  void BindNull(int index);

  /// True for a row, false at the end.
  bool Step();
  /// Of a statement that returns no rows: Step and Reset, whatever happens.
  void Execute();
  /// Makes the statement ready for the next run. What was bound stays bound, also to a text that is
  /// there no longer: whoever runs it again binds anew what has changed.
  void Reset() noexcept;
  /// The same, and everything is NULL.
  void Clear() noexcept;

  bool IsNull(int column) const noexcept;
  /// Valid until the next step; empty for NULL.
  std::string_view Text(int column) const noexcept;
  std::int64_t Number(int column) const noexcept;

 private:
  struct Finalizer {
    void operator()(sqlite3_stmt* statement) const noexcept;
  };
  sqlite3_stmt* Prepared() { return statement_ ? statement_.get() : Prepare(); }
  sqlite3_stmt* Prepare();

  const FloorDatabase& database_;
  std::string_view sql_;
  std::unique_ptr<sqlite3_stmt, Finalizer> statement_;
};

}  // namespace Benchmarks
