#include "platform/base64.h"

#include <sodium.h>

namespace {
constexpr int kVariant = sodium_base64_VARIANT_ORIGINAL;
}

std::size_t Base64_EncodedLength(std::size_t length) {
  return sodium_base64_encoded_len(length, kVariant);
}

bool Base64_Encode(const unsigned char* data, std::size_t length, char* buffer, std::size_t size,
                   std::size_t* written) {
  const std::size_t needed = Base64_EncodedLength(length);
  // The encoder ends the process when the room is too small.
  if (buffer == nullptr || size < needed) {
    return false;
  }
  sodium_bin2base64(buffer, size, data, length, kVariant);
  *written = needed - 1;
  return true;
}

std::size_t Base64_DecodedLength(const char* /*text*/, std::size_t length) {
  return length / 4 * 3 + 3;
}

bool Base64_Decode(std::string_view text, unsigned char* buffer, std::size_t size,
                   std::size_t* written) {
  const char* end = nullptr;
  if (sodium_base642bin(buffer, size, text.data(), text.size(), nullptr, written, &end, kVariant) !=
      0) {
    return false;
  }
  return end == text.data() + text.size();
}
