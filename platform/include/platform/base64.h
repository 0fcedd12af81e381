// Base64, RFC 4648: standard alphabet, with padding. Everything here is thread-safe.
#pragma once

#include <cstddef>
#include <string_view>

/// Room that encoding needs, the ending NUL included.
std::size_t Base64_EncodedLength(std::size_t length);
/// Encodes into a buffer of `size` bytes; `written` is the text's length. False when the room is
/// too small.
bool Base64_Encode(const unsigned char* data, std::size_t length, char* buffer, std::size_t size,
                   std::size_t* written);
/// Room that decoding a text needs at the most.
std::size_t Base64_DecodedLength(const char* text, std::size_t length);
/// Decodes into a buffer of `size` bytes; `written` is the number of bytes. False for what is no
/// Base64.
bool Base64_Decode(std::string_view text, unsigned char* buffer, std::size_t size,
                   std::size_t* written);
