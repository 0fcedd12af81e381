#include "db/doctor/records.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace DBStore::internal {
namespace {

// A record of ours has a dozen fields.
constexpr std::size_t kMostFields = 64;

std::uint64_t LengthOf(std::uint64_t serialType) noexcept {
  constexpr std::uint64_t kLengths[] = {0, 1, 2, 3, 4, 6, 8, 8, 0, 0, 0, 0};
  return serialType < std::size(kLengths) ? kLengths[serialType] : (serialType - 12) / 2;
}

Field Decode(std::uint64_t serialType, std::string_view bytes) {
  Field field;
  if (serialType >= 12) {
    field.type = serialType % 2 == 0 ? Field::Type::BLOB : Field::Type::TEXT;
    field.bytes = bytes;
  } else if (serialType == 7) {
    const std::uint64_t bits = ReadBigEndian(bytes, 8);
    field.type = Field::Type::REAL;
    std::memcpy(&field.real, &bits, sizeof bits);
  } else if (serialType == 8 || serialType == 9) {
    field.type = Field::Type::INTEGER;
    field.integer = serialType == 9 ? 1 : 0;
  } else if (serialType > 0) {
    // Two's complement of fewer bytes: the sign is that of the first.
    const unsigned shift = 64 - 8 * static_cast<unsigned>(bytes.size());
    field.type = Field::Type::INTEGER;
    field.integer = static_cast<std::int64_t>(ReadBigEndian(bytes, bytes.size()) << shift) >> shift;
  }
  return field;
}

// The types of the fields, and where the first begins.
bool ReadTypes(std::string_view payload, std::vector<std::uint64_t>& types, std::size_t& body) {
  std::string_view rest = payload;
  std::uint64_t headerLength = 0;
  if (!ReadVarint(rest, headerLength) || headerLength > payload.size() ||
      headerLength < payload.size() - rest.size()) {
    return false;
  }
  body = static_cast<std::size_t>(headerLength);
  std::string_view header =
      rest.substr(0, body - static_cast<std::size_t>(payload.size() - rest.size()));
  while (!header.empty()) {
    std::uint64_t type = 0;
    if (types.size() == kMostFields || !ReadVarint(header, type) || type == 10 || type == 11) {
      return false;
    }
    types.push_back(type);
  }
  return !types.empty();
}

}  // namespace

std::optional<std::string> Field::Text() const {
  switch (type) {
    case Type::NONE:
      return std::nullopt;
    case Type::INTEGER:
      return std::to_string(integer);
    case Type::REAL: {
      char text[32];
      std::snprintf(text, sizeof text, "%.17g", real);
      return text;
    }
    case Type::TEXT:
    case Type::BLOB:
      break;
  }
  return bytes;
}

bool ReadVarint(std::string_view& from, std::uint64_t& value) noexcept {
  value = 0;
  for (std::size_t i = 0; i < from.size() && i < 9; ++i) {
    const auto byte = static_cast<unsigned char>(from[i]);
    if (i == 8) {
      value = value << 8U | byte;
    } else {
      value = value << 7U | (byte & 0x7fU);
    }
    if (i == 8 || byte < 0x80) {
      from.remove_prefix(i + 1);
      return true;
    }
  }
  return false;
}

std::uint64_t ReadBigEndian(std::string_view from, std::size_t bytes) noexcept {
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < bytes; ++i) {
    value = value << 8U | static_cast<unsigned char>(from[i]);
  }
  return value;
}

namespace {

// As many fields as its beginning names; what follows them stays in `payload`.
bool ReadFields(std::string_view& payload, std::vector<Field>& fields) {
  std::vector<std::uint64_t> types;
  std::size_t body = 0;
  if (!ReadTypes(payload, types, body)) {
    return false;
  }
  payload.remove_prefix(body);
  fields.clear();
  for (const std::uint64_t type : types) {
    const std::uint64_t length = LengthOf(type);
    const std::string_view bytes = payload.substr(
        0, static_cast<std::size_t>(std::min<std::uint64_t>(length, payload.size())));
    payload.remove_prefix(bytes.size());
    const bool isCut = bytes.size() < length;
    Field field;
    if (!isCut || (type >= 12 && !bytes.empty())) {
      field = Decode(type, bytes);
    }
    field.isCut = isCut;
    fields.push_back(std::move(field));
  }
  return true;
}

}  // namespace

bool ReadRecord(std::string_view payload, std::vector<Field>& fields) {
  return ReadFields(payload, fields) && payload.empty() &&
         std::none_of(fields.begin(), fields.end(), [](const Field& field) { return field.isCut; });
}

bool ReadCutRecord(std::string_view payload, std::vector<Field>& fields) {
  return ReadFields(payload, fields);
}

}  // namespace DBStore::internal
