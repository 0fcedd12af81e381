#include "yaml/yaml_stream.h"

#include <cstddef>
#include <stdexcept>
#include <utility>

namespace tarnctl {

namespace {
constexpr std::size_t kMuch = 65536;
}  // namespace

YamlStream::YamlStream(std::function<void(std::string_view)> write)
    : write_(std::move(write)), emitter_(yaml_) {
  emitter_.Begin();
}

void YamlStream::Take(std::string_view piece) {
  for (const char character : piece) {
    inside_ == Inside::TEXT ? TakeInText(character) : TakeOutside(character);
  }
  if (yaml_.size() >= kMuch) {
    Flush();
  }
}

void YamlStream::End() {
  if (inside_ != Inside::NOTHING) {
    EndScalar();
  }
  emitter_.End();
  Flush();
}

void YamlStream::TakeInText(char character) {
  scalar_ += character;
  if (isEscaped_) {
    isEscaped_ = false;
  } else if (character == '"') {
    EndScalar();
  } else {
    isEscaped_ = character == '\\';
  }
}

void YamlStream::TakeOutside(char character) {
  constexpr std::string_view kEnds = "{}[],: \n\r\t";
  if (kEnds.find(character) == std::string_view::npos) {
    inside_ = character == '"' ? Inside::TEXT : Inside::SCALAR;
    scalar_ += character;
    return;
  }
  if (inside_ == Inside::SCALAR) {
    EndScalar();
  }
  switch (character) {
    case '{':
      emitter_.Open(rapidjson::kObjectType);
      break;
    case '}':
      emitter_.Close(rapidjson::kObjectType);
      break;
    case '[':
      emitter_.Open(rapidjson::kArrayType);
      break;
    case ']':
      emitter_.Close(rapidjson::kArrayType);
      break;
    default:
      break;
  }
}

void YamlStream::EndScalar() {
  Json::Document value;
  if (!Json::Parse(scalar_, value) || !emitter_.WriteScalar(value)) {
    throw std::runtime_error("the library said what is not JSON: " + scalar_);
  }
  scalar_.clear();
  inside_ = Inside::NOTHING;
}

void YamlStream::Flush() {
  write_(yaml_);
  yaml_.clear();
}

}  // namespace tarnctl
