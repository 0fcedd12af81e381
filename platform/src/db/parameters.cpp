#include "db/parameters.h"

#include <sqlite3.h>

namespace DBStore::internal {

bool Parameters::Set(int index, const Value& value) noexcept {
  if (index < 1 || static_cast<std::size_t>(index) > values_.size()) {
    return false;
  }
  values_[static_cast<std::size_t>(index) - 1] = value;
  changed_ = true;
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
    value.kind = Kind::KEPT;
  }
  changed_ = false;
  return SQLITE_OK;
}

void Parameters::Clear() noexcept {
  if (changed_) {
    for (Value& value : values_) {
      value.kind = Kind::KEPT;
    }
    changed_ = false;
  }
}

}  // namespace DBStore::internal
