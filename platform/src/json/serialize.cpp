#include "platform/json.h"

namespace Json {

bool Serialize(const Value& value, std::string& text) {
  constexpr std::size_t kUsualSize = 1024;
  rapidjson::StringBuffer buffer(nullptr, kUsualSize);
  rapidjson::Writer<rapidjson::StringBuffer, Encoding, Encoding, rapidjson::CrtAllocator,
                    rapidjson::kWriteValidateEncodingFlag>
      writer(buffer);
  if (!value.Accept(writer)) {
    text.clear();
    return false;
  }
  text.assign(buffer.GetString(), buffer.GetSize());
  return true;
}

}  // namespace Json
