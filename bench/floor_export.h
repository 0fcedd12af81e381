// Writing the rows of a type as one indented text, by hand.
#pragma once

#include "tarnconfigstore/object_id.h"

#include "floor_database.h"
#include "floor_json.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace Benchmarks {

/// Appends a JSON text, each member and element on a line of its own. It is followed by a NUL. Raises
/// std::runtime_error for what is not JSON.
void PutIndented(TextMaker& text, std::string_view json);

/// Reads each text strictly and writes it as it is read; nothing is made of it. Raises
/// std::runtime_error for a text that is not JSON.
class FloorExport {
 public:
  explicit FloorExport(const std::string& root);

  /// The bytes that were written, in pieces that nobody keeps.
  std::size_t Run(const TarnConfigStore::ConfigStoreObjectId& type);

 private:
  FloorDatabase database_;
  FloorStatement texts_;
  TextMaker text_;
};

}  // namespace Benchmarks
