// The properties of an object's schema, found by name.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace JsonValidator {

struct Node;

/// One declared property.
struct Property {
  std::string_view name;
  const Node* node = nullptr;
  std::uint64_t requiredBit = 0;  ///< its bit among the required ones; 0 when it is not required
};

/// Open addressing over a few bytes of each name: a look-up costs some nanoseconds and allocates
/// nothing.
class PropertyTable {
 public:
  /// Takes over the properties, whose names outlive the table.
  void Assign(std::vector<Property> properties);

  /// The property of this name, or null.
  const Property* Find(std::string_view name) const noexcept {
    if (slots_.empty()) {
      return nullptr;
    }
    for (std::size_t slot = SlotOf(name);; slot = (slot + 1) & (slots_.size() - 1)) {
      const std::uint32_t at = slots_[slot];
      if (at == kFree) {
        return nullptr;
      }
      if (properties_[at].name == name) {
        return &properties_[at];
      }
    }
  }

  /// In the schema's order.
  const std::vector<Property>& All() const { return properties_; }

 private:
  static constexpr std::uint32_t kFree = 0xFFFFFFFFU;

  std::size_t SlotOf(std::string_view name) const noexcept;

  std::vector<Property> properties_;
  std::vector<std::uint32_t> slots_;  // a power of two, at most half full
  int shift_ = 0;
};

}  // namespace JsonValidator
