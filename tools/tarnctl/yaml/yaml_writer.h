// Data as YAML.
#pragma once

#include "json/json.h"

#include <string>

namespace tarnctl {

/// The value as one YAML document, members in their order, as YamlEmitter writes it. False, with an
/// empty text, for what JSON cannot say either (see Json::Serialize).
bool WriteYaml(const Json::Value& value, std::string& text);

}  // namespace tarnctl
