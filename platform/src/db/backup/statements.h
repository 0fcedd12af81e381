// All SQL on databases that are copied as a whole. Their tables are defined in db/layout.cpp.
#pragma once

namespace DBStore::internal::Sql {

// With the first read the moment is chosen that everything until the end shows.
constexpr const char* kBeginReading = "BEGIN; SELECT 1 FROM sqlite_schema";
constexpr const char* kBeginWriting = "BEGIN IMMEDIATE";
constexpr const char* kEnd = "ROLLBACK";

// For a file that is thrown away when it could not be written.
constexpr const char* kWriteUnsafely = "PRAGMA journal_mode=OFF; PRAGMA synchronous=OFF";

// Scans the table, which has a few rows: it is asked for all of them.
constexpr const char* kReadEntries = "SELECT Key, Value FROM KeyValue WHERE Value <> ''";

constexpr const char* kCheckIntegrity = "PRAGMA integrity_check(1)";
constexpr const char* kPageSize = "PRAGMA page_size";

// Both scan the whole table: they count what a listing of everything would show.
constexpr const char* kCountObjects =
    "SELECT COUNT(*) FROM Config WHERE COALESCE(UserValue, DesiredValue, AutoConfValue, "
    "VitalValue, "
    "CachedValue) IS NOT NULL";
constexpr const char* kCountTypes = "SELECT COUNT(*) FROM Types";

// The restored types may have the number of those that were there before, and processes that keep
// types in memory would take them for the same. Milliseconds since 1970 are ahead of any count of
// changes, and of what an earlier restore set.
constexpr const char* kRenumberTypes =
    "UPDATE Generation SET Value = MAX(Value, "
    "CAST((julianday('now') - 2440587.5) * 86400000 AS INTEGER)) + 1";

}  // namespace DBStore::internal::Sql
