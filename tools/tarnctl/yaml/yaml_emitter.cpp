#include "yaml/yaml_emitter.h"

#include "json/print.h"
#include "json/utf8.h"
#include "yaml/core_scalars.h"

#include <cstddef>
#include <new>
#include <string_view>
#include <utility>

namespace tarnctl {
namespace {

yaml_char_t* Characters(std::string_view text) {
  return reinterpret_cast<yaml_char_t*>(const_cast<char*>(text.data()));  // which are copied
}

// Readers of YAML 1.1 take a number with an exponent for a text where it has no point.
std::string WithPoint(std::string digits) {
  const std::size_t exponent = digits.find('e');
  if (exponent != std::string::npos && digits.find('.') == std::string::npos) {
    digits.insert(exponent, 1, '.').insert(exponent + 1, 1, '0');
  }
  return digits;
}

int Append(void* text, unsigned char* characters, std::size_t size) {
  static_cast<std::string*>(text)->append(reinterpret_cast<const char*>(characters), size);
  return 1;
}

}  // namespace

YamlEmitter::YamlEmitter(std::string& text) {
  if (yaml_emitter_initialize(&emitter_) == 0) {
    throw std::bad_alloc();
  }
  yaml_emitter_set_unicode(&emitter_, 1);
  yaml_emitter_set_width(&emitter_, -1);  // a folded text is hard to compare
  yaml_emitter_set_output(&emitter_, &Append, &text);
}

void YamlEmitter::Begin() {
  yaml_event_t event;
  Emit(event, yaml_stream_start_event_initialize(&event, YAML_UTF8_ENCODING));
  Emit(event, yaml_document_start_event_initialize(&event, nullptr, nullptr, nullptr, 1));
}

void YamlEmitter::End() {
  yaml_event_t event;
  Emit(event, yaml_document_end_event_initialize(&event, 1));
  Emit(event, yaml_stream_end_event_initialize(&event));
}

void YamlEmitter::Open(rapidjson::Type type) {
  yaml_event_t event;
  Emit(event, type == rapidjson::kObjectType
                  ? yaml_mapping_start_event_initialize(&event, nullptr, nullptr, 1,
                                                        YAML_BLOCK_MAPPING_STYLE)
                  : yaml_sequence_start_event_initialize(&event, nullptr, nullptr, 1,
                                                         YAML_BLOCK_SEQUENCE_STYLE));
}

void YamlEmitter::Close(rapidjson::Type type) {
  yaml_event_t event;
  Emit(event, type == rapidjson::kObjectType ? yaml_mapping_end_event_initialize(&event)
                                             : yaml_sequence_end_event_initialize(&event));
}

bool YamlEmitter::WriteScalar(const Json::Value& value) {
  std::string digits;
  std::string_view text;
  yaml_scalar_style_t style = YAML_PLAIN_SCALAR_STYLE;
  if (value.IsString()) {
    text = Json::Text(value);
    if (!Json::Utf8::IsValid(text)) {
      return false;
    }
    style = IsPlainEverywhere(text) ? style : YAML_DOUBLE_QUOTED_SCALAR_STYLE;
  } else {
    if (!Json::Print(value, Json::Layout::ONE_LINE, Json::BadText::REFUSED, digits)) {
      return false;
    }
    digits = value.IsDouble() ? WithPoint(std::move(digits)) : digits;
    text = digits;
  }
  yaml_event_t event;
  Emit(event, yaml_scalar_event_initialize(&event, nullptr, nullptr, Characters(text),
                                           static_cast<int>(text.size()), 1, 1, style));
  return true;
}

void YamlEmitter::Emit(yaml_event_t& event, int made) {
  if (made == 0 || yaml_emitter_emit(&emitter_, &event) == 0) {
    throw std::bad_alloc();  // nothing else can go wrong with events in their order
  }
}

}  // namespace tarnctl
