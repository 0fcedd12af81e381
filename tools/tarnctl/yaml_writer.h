// Data as YAML.
#pragma once

#include "json/json.h"

#include <string>

namespace tarnctl {

/// The value as one YAML document in block style, members in their order, with a line end. Every
/// reader of YAML, of 1.1 as of 1.2, gets the same value from it: texts that one of them would take
/// for something else stand in double quotes. False, with an empty text, for what JSON cannot say
/// either (see Json::Serialize).
bool WriteYaml(const Json::Value& value, std::string& text);

}  // namespace tarnctl
