#include "json/json.h"

#include <cstring>
#include <utility>

namespace Json {

// RapidJSON notes the greater room of an object before it has it.
void AddMember(Value& object, Value&& name, Value&& value, Allocator& allocator) {
  unsigned char before[sizeof object];
  std::memcpy(before, static_cast<const void*>(&object), sizeof object);
  try {
    object.AddMember(name, value, allocator);
  } catch (const std::bad_alloc&) {
    std::memcpy(static_cast<void*>(&object), before, sizeof object);
    throw;
  }
}

// Its CopyFrom ends the target before it has the copy.
void CopyInto(Value& target, const Value& source, Allocator& allocator) {
  Value copy(source, allocator);
  target = std::move(copy);
}

}  // namespace Json
