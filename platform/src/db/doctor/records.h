// Records as they lie in a database file (https://sqlite.org/fileformat2.html#record_format).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace DBStore::internal {

/// A value of a record.
struct Field {
  enum class Type { NONE, INTEGER, REAL, TEXT, BLOB };
  Type type = Type::NONE;
  std::int64_t integer = 0;
  double real = 0;
  std::string bytes;   ///< of TEXT and BLOB
  bool isCut = false;  ///< the rest of the bytes is missing

  /// As a text; nothing for NULL.
  std::optional<std::string> Text() const;
  friend bool operator==(const Field&, const Field&) = default;
};

/// A number in one to nine bytes. Moves `from` behind it; false when it is cut short.
bool ReadVarint(std::string_view& from, std::uint64_t& value) noexcept;

/// An unsigned number of so many bytes, the greatest first.
std::uint64_t ReadBigEndian(std::string_view from, std::size_t bytes) noexcept;

/// Reads a whole record. False for anything that is none.
bool ReadRecord(std::string_view payload, std::vector<Field>& fields);

/// Reads what there is of a record that is cut short: as many fields as its beginning names, those
/// that are missing as NULL. False when it does not even name them.
bool ReadCutRecord(std::string_view payload, std::vector<Field>& fields);

}  // namespace DBStore::internal
