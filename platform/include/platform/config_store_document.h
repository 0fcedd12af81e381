// Small questions about JSON documents. Thread-safe for values that nobody changes.
#pragma once

#include "json/json.h"

#include <string>

namespace ConfigStoreDocument {

/// True exactly when the object has a member of this name, whatever its value. The JSON assertion
/// when the value is not an object.
bool ValueExists(const Json::Value& object, const char* name);

/// Deep equality; the order of an object's members does not matter, numbers compare by value.
bool ValuesEqual(const Json::Value& a, const Json::Value& b);

/// The value as compact text; false where JSON cannot say it (see Json::Serialize).
bool SerializeValue(const Json::Value& value, std::string& text);

}  // namespace ConfigStoreDocument
