// All SQL on the schema store. Its tables are defined in db/layout.cpp.
#pragma once

namespace TarnSchemaStore::Sql {

constexpr const char* kReadGeneration = "SELECT Value FROM Generation WHERE Id = 1";

constexpr const char* kReadType =
    "SELECT Component, ConfigGroup, Name, Version, Document FROM Types "
    "WHERE Component = ? AND ConfigGroup = ? AND Name = ?";

// Both scan the whole table, in the order of its key: they are asked for all of it.
constexpr const char* kReadAllTypes =
    "SELECT Component, ConfigGroup, Name, Version, Document FROM Types "
    "ORDER BY Component, ConfigGroup, Name";
constexpr const char* kReadAllNames =
    "SELECT Component, ConfigGroup, Name FROM Types ORDER BY Component, ConfigGroup, Name";

constexpr const char* kWriteType =
    "INSERT OR REPLACE INTO Types(Component, ConfigGroup, Name, Version, ValueType, Document) "
    "VALUES(?, ?, ?, ?, ?, ?)";

constexpr const char* kRemoveType =
    "DELETE FROM Types WHERE Component = ? AND ConfigGroup = ? AND Name = ?";

constexpr const char* kBegin = "BEGIN IMMEDIATE";
constexpr const char* kCommit = "COMMIT";

}  // namespace TarnSchemaStore::Sql
