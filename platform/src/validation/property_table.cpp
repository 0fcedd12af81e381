#include "validation/property_table.h"

#include <bit>
#include <cstring>
#include <utility>

namespace JsonValidator {
namespace {

std::uint64_t HashOf(std::string_view name) noexcept {
  constexpr std::uint64_t kSpread = 0x9E3779B97F4A7C15U;
  std::uint64_t head = 0;
  std::uint64_t tail = 0;
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
  return (head ^ std::rotl(tail * kSpread, 32) ^ name.size()) * kSpread;
}

}  // namespace

std::size_t PropertyTable::SlotOf(std::string_view name) const noexcept {
  return static_cast<std::size_t>(HashOf(name) >> static_cast<unsigned>(shift_));
}

void PropertyTable::Assign(std::vector<Property> properties) {
  properties_ = std::move(properties);
  slots_.clear();
  if (properties_.empty()) {
    return;
  }
  const std::size_t size = std::bit_ceil(properties_.size() * 2);
  slots_.assign(size, kFree);
  shift_ = 64 - std::countr_zero(size);
  for (std::uint32_t i = 0; i < properties_.size(); ++i) {
    std::size_t slot = SlotOf(properties_[i].name);
    while (slots_[slot] != kFree) {
      slot = (slot + 1) & (size - 1);
    }
    slots_[slot] = i;
  }
}

}  // namespace JsonValidator
