// Looking at the members of an object's text, without making values of it.
#pragma once

#include "json/json.h"

#include <optional>
#include <string_view>

namespace Json {

/// Gets the members of an object as they come in its text.
class MemberReceiver {
 public:
  virtual ~MemberReceiver() = default;
  /// Whether the member's value is to be handed on. The name is valid during the call.
  virtual bool Wants(std::string_view name) = 0;
  /// The value of the member asked about last. Of an array or an object only the type is given; a
  /// text is valid during the call.
  virtual void Receive(const Value& value) = 0;
};

/// Hands on the members of an object, not of those inside.
/// \return true when the text is all that Parse asks of a STORED one, and an object; what was handed
///         on before the fault is of no use where it is not
bool ScanMembers(std::string_view text, MemberReceiver& receiver);

/// The type of the value that a text holds, by JSON's grammar alone: also where Parse refuses the text
/// for what it says, as a number that is too large. Nothing where the text is no JSON.
std::optional<rapidjson::Type> TypeByGrammar(std::string_view text);

}  // namespace Json
