// All SQL of examining and mending databases. What should be in them is defined in db/layout.cpp.
#pragma once

namespace DBStore::internal::Sql {

// SQLite's own tables have no definitions that anybody could have changed.
constexpr const char* kTables =
    "SELECT name, wr FROM pragma_table_list WHERE schema = 'main' AND type = 'table' AND name NOT "
    "LIKE 'sqlite^_%' ESCAPE '^' ORDER BY name";
constexpr const char* kColumns =
    "SELECT name, type, \"notnull\", pk FROM pragma_table_info(?) ORDER BY cid";
constexpr const char* kObjects =
    "SELECT type, name, tbl_name, sql FROM sqlite_schema WHERE sql NOT NULL ORDER BY rowid";

constexpr const char* kFindDamage = "PRAGMA integrity_check(20)";

constexpr const char* kBeginMending = "BEGIN IMMEDIATE";
constexpr const char* kCommitMending = "COMMIT";

}  // namespace DBStore::internal::Sql
