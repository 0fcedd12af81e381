#include "db/parameters.h"

#include <sqlite3.h>

namespace DBStore::internal {

bool Parameters::Set(int index, Kind kind, int number, std::string_view text) noexcept {
  if (index < 1 || static_cast<std::size_t>(index) > values_.size()) {
    return false;
  }
  Value& value = values_[static_cast<std::size_t>(index) - 1];
  value.kind = kind == Kind::NOTHING && !value.isBound ? Kind::KEPT : kind;
  value.number = number;
  value.text = text;
  changed_ |= value.kind != Kind::KEPT;
  return true;
}

int Parameters::Bind(sqlite3_stmt* statement) noexcept {
  if (!changed_) {
    return SQLITE_OK;
  }
  int code = SQLITE_OK;
  int index = 0;
  for (Value& value : values_) {
    ++index;
    switch (value.kind) {
      case Kind::KEPT:
        continue;
      case Kind::NOTHING:
        code = sqlite3_bind_null(statement, index);
        break;
      case Kind::INTEGER:
        code = sqlite3_bind_int(statement, index, value.number);
        break;
      case Kind::TEXT:
        // A text of no length may have no address, which SQLite would take for NULL.
        code = sqlite3_bind_text64(statement, index, value.text.empty() ? "" : value.text.data(),
                                   value.text.size(), SQLITE_STATIC, SQLITE_UTF8);
        break;
    }
    if (code != SQLITE_OK) {
      return code;
    }
    value.isBound = value.kind != Kind::NOTHING;
    value.kind = Kind::KEPT;
  }
  changed_ = false;
  return SQLITE_OK;
}

void Parameters::Clear() noexcept {
  changed_ = false;
  for (Value& value : values_) {
    value.kind = value.isBound ? Kind::NOTHING : Kind::KEPT;
    changed_ |= value.isBound;
  }
}

}  // namespace DBStore::internal
