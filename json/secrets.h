// Values that are not shown to everybody: masking them, and putting them back.
#pragma once

#include "json/json.h"
#include "json/type_schema_view.h"

#include <functional>
#include <string>

namespace Json {

/// What a secret is shown as.
inline constexpr const char* kMask = "***";

/// Puts the mask in place of each secret at or below a place; what is null stays.
/// \param pointer  of the value; it is as it was afterwards
/// \param masked   gets the JSON Pointer of each; may be empty
void MaskSecrets(Value& value, SchemaPlace place, Allocator& allocator, std::string& pointer,
                 const std::function<void(const std::string& pointer)>& masked);

/// How masks are taken back.
struct MaskedText {
  /// Whether a mask was put there; one that was not is refused.
  std::function<bool(const std::string& pointer)> isMasked;
  /// Gets each mask for which there is no secret, with the reason.
  std::function<void(const std::string& pointer, const char* reason)> refuse;
};

/// Puts the secrets of a stored value in place of the masks of another. Elements of lists are found
/// by their instance ids; where they have none, by all that is shown of them, and only where that
/// leaves no doubt.
/// \param stored  null where nothing is stored
void RestoreSecrets(Value& value, const Value* stored, SchemaPlace place, Allocator& allocator,
                    std::string& pointer, const MaskedText& masks);

/// True when there is a mask at a secret place.
bool HoldsMasks(const Value& value, SchemaPlace place);

}  // namespace Json
