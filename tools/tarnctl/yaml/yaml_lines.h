// Where in a YAML text the parts of its value stand.
#pragma once

#include "json/json.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace tarnctl {

/// The line of each value in a text, eight bytes a value: of a member the line of its name, of
/// anything else that of its beginning.
class YamlLines {
 public:
  /// Adds a value; what is inside of it has to be added next, before it is closed.
  /// \return what Close takes
  std::size_t Open(std::size_t line);
  void Close(std::size_t value) { values_[value].end = static_cast<std::uint32_t>(values_.size()); }

  /// The line of what a JSON Pointer names, "/" naming the root too; of what is not there, the line of
  /// the nearest value around it. 0 for a text that is no pointer.
  /// \param root  the value, as it was read: nothing in it may have been added, removed or moved
  std::size_t Find(const Json::Value& root, std::string_view pointer) const;

 private:
  struct Entry {
    std::uint32_t line;
    std::uint32_t end;  // the entry of what follows the value and all that is inside of it
  };
  std::vector<Entry> values_;
};

}  // namespace tarnctl
