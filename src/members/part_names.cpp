#include "tarnconfigstore/parts.h"

#include "documents/sections.h"

#include <cstddef>

namespace TarnConfigStore {

static_assert(static_cast<int>(ConfigPart::USER) == static_cast<int>(Section::USER) &&
              static_cast<int>(ConfigPart::PENDING) == static_cast<int>(Section::PENDING));

const char* NameOf(ConfigPart part) noexcept {
  return kPartNames[static_cast<std::size_t>(part)];
}

}  // namespace TarnConfigStore
