#include "json_schema/property_table.h"

#include <bit>
#include <utility>

namespace JsonValidator {

void PropertyTable::Assign(std::vector<Property> properties) {
  properties_ = std::move(properties);
  slots_.clear();
  if (properties_.empty()) {
    return;
  }
  slots_.resize(std::bit_ceil(properties_.size() * 2));
  shift_ = 64 - std::countr_zero(slots_.size());
  for (std::uint32_t i = 0; i < properties_.size(); ++i) {
    const NameKey key(properties_[i].name);
    std::size_t at = StartOf(key, properties_[i].name.size());
    while (slots_[at].property != kFree) {
      at = (at + 1) & (slots_.size() - 1);
    }
    slots_[at] = {key, i};
  }
}

}  // namespace JsonValidator
