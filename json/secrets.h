// Values that are not shown to everybody: where they are, masking them, and putting them back.
#pragma once

#include "json/json.h"
#include "json/type_schema_view.h"

#include <functional>
#include <string>
#include <string_view>

namespace Json {

/// What a secret is shown as.
inline constexpr const char* kMask = "***";

/// Where a way into a value has come to, and what may be told of it.
class Sight {
 public:
  explicit Sight(SchemaPlace root) : Sight(root, false, false) {}

  Sight Member(std::string_view name) const { return {at_.Property(name), isSecret_, true}; }
  Sight Element() const { return {at_.Items(), isSecret_, false}; }
  /// By the token of a JSON Pointer, whatever the value is.
  Sight Token(std::string_view token) const;

  SchemaPlace Place() const { return at_; }
  /// The value here is a secret, or lies in one.
  bool IsSecret() const { return isSecret_; }
  /// The name of the member here is part of a secret. Names that the schema knows are not.
  bool HidesName() const { return hidesName_; }

 private:
  Sight(SchemaPlace at, bool aroundIsSecret, bool isMember)
      : at_(at),
        isSecret_(aroundIsSecret || at.IsSecret()),
        hidesName_(aroundIsSecret && isMember && !at) {}

  SchemaPlace at_;
  bool isSecret_;
  bool hidesName_;
};

/// A JSON Pointer with the mask for each name that is part of a secret.
std::string ShownPointer(std::string_view pointer, SchemaPlace root);

/// Puts the mask in place of each secret at or below a place; what is null stays.
/// \param pointer  of the value; it is as it was afterwards
/// \param masked   gets the JSON Pointer of each; may be empty
void MaskSecrets(Value& value, SchemaPlace place, Allocator& allocator, std::string& pointer,
                 const std::function<void(const std::string& pointer)>& masked);

/// The text of a value with the mask for each secret, and without generated ids.
std::string TextWithMasks(const Value& value, SchemaPlace place);

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
