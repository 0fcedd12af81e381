// "***" where a secret belongs: what get printed, given back.
#pragma once

#include "failure.h"
#include "store/type_schema.h"

namespace tarnctl {

/// A finding for each. The library would store it as the secret.
Findings FindMasks(const Json::Value& data, const TypeSchema& type);

}  // namespace tarnctl
