#include "yaml_writer.h"

#include "core_scalars.h"
#include "json/print.h"
#include "json/utf8.h"

#include <new>
#include <string_view>
#include <yaml.h>

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

class Writer {
 public:
  explicit Writer(std::string& text) {
    if (yaml_emitter_initialize(&emitter_) == 0) {
      throw std::bad_alloc();
    }
    yaml_emitter_set_unicode(&emitter_, 1);
    yaml_emitter_set_width(&emitter_, -1);  // a folded text is hard to compare
    yaml_emitter_set_output(&emitter_, &Append, &text);
  }
  ~Writer() { yaml_emitter_delete(&emitter_); }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;

  bool Write(const Json::Value& value) {
    yaml_event_t event;
    Emit(event, yaml_stream_start_event_initialize(&event, YAML_UTF8_ENCODING));
    Emit(event, yaml_document_start_event_initialize(&event, nullptr, nullptr, nullptr, 1));
    const bool written = WriteValue(value);
    if (written) {
      Emit(event, yaml_document_end_event_initialize(&event, 1));
      Emit(event, yaml_stream_end_event_initialize(&event));
    }
    return written;
  }

 private:
  static int Append(void* text, unsigned char* characters, std::size_t size) {
    static_cast<std::string*>(text)->append(reinterpret_cast<const char*>(characters), size);
    return 1;
  }

  void Emit(yaml_event_t& event, int made) {
    if (made == 0 || yaml_emitter_emit(&emitter_, &event) == 0) {
      throw std::bad_alloc();  // nothing else can go wrong with events in their order
    }
  }

  void EmitScalar(std::string_view text, yaml_scalar_style_t style) {
    yaml_event_t event;
    Emit(event, yaml_scalar_event_initialize(&event, nullptr, nullptr, Characters(text),
                                             static_cast<int>(text.size()), 1, 1, style));
  }

  bool WriteText(const Json::Value& text) {
    if (!Json::Utf8::IsValid(Json::Text(text))) {
      return false;
    }
    EmitScalar(Json::Text(text), IsPlainEverywhere(Json::Text(text))
                                     ? YAML_PLAIN_SCALAR_STYLE
                                     : YAML_DOUBLE_QUOTED_SCALAR_STYLE);
    return true;
  }

  bool WriteValue(const Json::Value& value) {
    if (value.IsString()) {
      return WriteText(value);
    }
    if (value.IsObject()) {
      return WriteObject(value);
    }
    if (value.IsArray()) {
      return WriteArray(value);
    }
    std::string digits;
    if (!Json::Print(value, Json::Layout::ONE_LINE, Json::BadText::REFUSED, digits)) {
      return false;
    }
    EmitScalar(value.IsDouble() ? WithPoint(std::move(digits)) : digits, YAML_PLAIN_SCALAR_STYLE);
    return true;
  }

  bool WriteObject(const Json::Value& object) {
    yaml_event_t event;
    Emit(event, yaml_mapping_start_event_initialize(&event, nullptr, nullptr, 1,
                                                    YAML_BLOCK_MAPPING_STYLE));
    for (const auto& [name, value] : object.GetObject()) {
      if (!WriteText(name) || !WriteValue(value)) {
        return false;
      }
    }
    Emit(event, yaml_mapping_end_event_initialize(&event));
    return true;
  }

  bool WriteArray(const Json::Value& array) {
    yaml_event_t event;
    Emit(event, yaml_sequence_start_event_initialize(&event, nullptr, nullptr, 1,
                                                     YAML_BLOCK_SEQUENCE_STYLE));
    for (const Json::Value& element : array.GetArray()) {
      if (!WriteValue(element)) {
        return false;
      }
    }
    Emit(event, yaml_sequence_end_event_initialize(&event));
    return true;
  }

  yaml_emitter_t emitter_{};
};

}  // namespace

bool WriteYaml(const Json::Value& value, std::string& text) {
  text.clear();
  const bool written = Writer(text).Write(value);
  if (!written) {
    text.clear();
  }
  return written;
}

}  // namespace tarnctl
