// The properties of an object's schema, found by name.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
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

/// The first and the last bytes of a name: they spread names over a table, and settle whether short
/// names are equal.
struct NameKey {
  std::uint64_t head = 0;
  std::uint64_t tail = 0;

  explicit NameKey(std::string_view name) noexcept {
    if (name.size() >= sizeof(head)) {
      std::memcpy(&head, name.data(), sizeof(head));
      std::memcpy(&tail, name.data() + name.size() - sizeof(tail), sizeof(tail));
    } else if (name.size() >= sizeof(std::uint32_t)) {
      std::uint32_t part = 0;
      std::memcpy(&part, name.data(), sizeof(part));
      head = part;
      std::memcpy(&part, name.data() + name.size() - sizeof(part), sizeof(part));
      tail = part;
    } else if (!name.empty()) {
      head = static_cast<unsigned char>(name.front());
      tail = static_cast<std::uint64_t>(static_cast<unsigned char>(name.back())) << 8U |
             static_cast<unsigned char>(name[name.size() / 2]);
    }
  }

  /// Names of this length at most are equal when their keys and lengths are.
  static constexpr std::size_t kSettles = 2 * sizeof(std::uint64_t);

  friend bool operator==(const NameKey&, const NameKey&) = default;
};

/// Open addressing: a look-up costs some nanoseconds and allocates nothing.
class PropertyTable {
 public:
  /// Takes over the properties, whose names outlive the table.
  void Assign(std::vector<Property> properties);

  /// The property of this name, or null.
  const Property* Find(std::string_view name) const noexcept {
    if (slots_.empty()) {
      return nullptr;
    }
    const NameKey key(name);
    for (std::size_t at = StartOf(key, name.size());; at = (at + 1) & (slots_.size() - 1)) {
      const Slot& slot = slots_[at];
      if (slot.property == kFree) {
        return nullptr;
      }
      const Property& property = properties_[slot.property];
      if (slot.key == key && property.name.size() == name.size() &&
          (name.size() <= NameKey::kSettles || property.name == name)) {
        return &property;
      }
    }
  }

  /// In the schema's order.
  const std::vector<Property>& All() const { return properties_; }

 private:
  static constexpr std::uint32_t kFree = 0xFFFFFFFFU;
  struct Slot {
    NameKey key{std::string_view()};
    std::uint32_t property = kFree;
  };

  std::size_t StartOf(const NameKey& key, std::size_t length) const noexcept {
    constexpr std::uint64_t kSpread = 0x9E3779B97F4A7C15U;
    const std::uint64_t mixed = key.head ^ std::rotl(key.tail * kSpread, 32) ^ length;
    return static_cast<std::size_t>((mixed * kSpread) >> static_cast<unsigned>(shift_));
  }

  std::vector<Property> properties_;
  std::vector<Slot> slots_;  // a power of two, at most half full
  int shift_ = 0;
};

}  // namespace JsonValidator
