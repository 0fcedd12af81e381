// Identifiers that the store gives to array elements that have none of their own.
#pragma once

#include "platform/json.h"

/// The member that holds such an identifier. Callers of the library never see it.
inline constexpr const char* kGeneratedInstanceIdMember = "cs_generated_id";

/// Gives each element of every array whose schema's items say "generatedInstanceId": true a member
/// "cs_generated_id" with a fresh UUID, where it has none. Elements that are no objects are left
/// alone.
void PopulateGeneratedInstanceId(const Json::Value& schema, Json::Value& value,
                                 Json::Allocator& allocator);
