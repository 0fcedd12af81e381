#include "platform/base64.h"

#include "errors/raise.h"
#include "objects/store_object_impl.h"

#include <memory>
#include <string>

namespace TarnConfigStore {

void StoreObjectImpl::SetValueBinary(const char* key, const unsigned char* data,
                                     unsigned long length) {
  if (data == nullptr || length == 0) {
    ThrowArgument("Value pointer cannot be null and length cannot be zero");
  }
  std::string text;
  if (!EncodeBinary(data, length, text) || text.empty()) {
    ThrowFailure("Failed to encode input binary value");
  }
  SetValue(key, std::string_view(text));
}

int StoreObjectImpl::GetValueBinary(const char* key, unsigned char** data,
                                    unsigned long* length) const {
  std::string text;
  const int origin = GetValue(key, &text);
  if (origin != 0 && !DecodeBinary(text, data, length)) {
    ThrowFailure("Failed to decode binary value");
  }
  return origin;
}

bool StoreObjectImpl::EncodeBinary(const unsigned char* data, unsigned long length,
                                   std::string& out) {
  const std::size_t size = Base64_EncodedLength(length);
  const auto buffer = std::make_unique<char[]>(size);
  std::size_t written = 0;
  if (!Base64_Encode(data, length, buffer.get(), size, &written)) {
    return false;
  }
  out.assign(buffer.get(), written);
  return true;
}

bool StoreObjectImpl::DecodeBinary(std::string& text, unsigned char** out, unsigned long* length) {
  const std::size_t size = Base64_DecodedLength(text.c_str(), text.size());
  auto buffer = std::make_unique<unsigned char[]>(size);
  std::size_t written = 0;
  if (!Base64_Decode(text, buffer.get(), size, &written)) {
    return false;
  }
  *out = buffer.release();
  *length = written;
  return true;
}

}  // namespace TarnConfigStore
