// What tells the instances of a type, and the elements of a list, apart.
#pragma once

#include "json/json.h"

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace Json {

/// The member that holds the identifier which the store gives to an element that has none of its
/// own. Callers of the library never see it.
inline constexpr const char* kGeneratedInstanceId = "cs_generated_id";

/// The most bytes that the instance id of an object may have.
inline constexpr std::size_t kMaxInstanceIdSize = 255;

/// True for a text that may be the instance id of an object: 1 to 255 bytes of UTF-8 without
/// control characters. A NUL would end the id early wherever it is bound as a C string, and name
/// another row; a line end would forge lines in logs.
bool IsInstanceId(std::string_view text) noexcept;

/// True when there are generated ids at any depth.
bool HasGeneratedId(const Value& value);

/// Removes the generated ids at any depth.
void ClearGeneratedIds(Value& value);

/// The text in the id member of an object; nothing where there is none, or where objects of its kind
/// have no ids.
/// \param idMember  the member's name, or empty: even then there may be a member that is named ""
std::optional<std::string_view> InstanceIdOf(const Value& object, std::string_view idMember);

/// The ids of a list's elements, in their order; nothing where they do not tell the elements apart:
/// one has none, or two have the same.
std::optional<std::vector<std::string_view>> InstanceIdsOf(const Value& list,
                                                           std::string_view idMember);

}  // namespace Json
