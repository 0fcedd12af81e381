#include "platform/config_store_document.h"

#include "json/equality.h"

namespace ConfigStoreDocument {

bool ValueExists(const Json::Value& object, const char* name) {
  return object.FindMember(Json::Reference(name)) != object.MemberEnd();
}

bool ValuesEqual(const Json::Value& a, const Json::Value& b) {
  return Json::Equal(a, b);
}

bool SerializeValue(const Json::Value& value, std::string& text) {
  return Json::Serialize(value, text);
}

}  // namespace ConfigStoreDocument
