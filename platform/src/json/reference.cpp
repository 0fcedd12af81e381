#include "platform/json.h"

#include <rapidjson/pointer.h>

namespace Json {

const Value* FollowReference(const Value& root, const Value& schema) {
  // More than any schema has a use for; what goes on for longer goes round in a circle.
  constexpr int kMostHops = 32;
  const Value* found = &schema;
  for (int hop = 0; hop < kMostHops; ++hop) {
    const Value* reference = FindMember(*found, "$ref");
    if (reference == nullptr || !reference->IsString()) {
      return found;
    }
    const std::string_view text = Text(*reference);
    if (text.substr(0, 1) != "#") {
      return nullptr;
    }
    const rapidjson::GenericPointer<Value, rapidjson::CrtAllocator> pointer(text.data(),
                                                                            text.size());
    found = pointer.IsValid() ? pointer.Get(root) : nullptr;
    if (found == nullptr) {
      return nullptr;
    }
  }
  return nullptr;
}

}  // namespace Json
