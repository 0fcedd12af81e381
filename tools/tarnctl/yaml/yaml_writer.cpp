#include "yaml/yaml_writer.h"

#include "yaml/yaml_emitter.h"

namespace tarnctl {
namespace {

bool WriteValue(const Json::Value& value, YamlEmitter& emitter) {
  if (!value.IsObject() && !value.IsArray()) {
    return emitter.WriteScalar(value);
  }
  emitter.Open(value.GetType());
  if (value.IsObject()) {
    for (const auto& [name, member] : value.GetObject()) {
      if (!emitter.WriteScalar(name) || !WriteValue(member, emitter)) {
        return false;
      }
    }
  } else {
    for (const Json::Value& element : value.GetArray()) {
      if (!WriteValue(element, emitter)) {
        return false;
      }
    }
  }
  emitter.Close(value.GetType());
  return true;
}

}  // namespace

bool WriteYaml(const Json::Value& value, std::string& text) {
  text.clear();
  YamlEmitter emitter(text);
  emitter.Begin();
  if (!WriteValue(value, emitter)) {
    text.clear();
    return false;
  }
  emitter.End();
  return true;
}

}  // namespace tarnctl
