// A YAML text, made piece by piece.
#pragma once

#include "json/json.h"

#include <string>
#include <yaml.h>

namespace tarnctl {

/// Writes one YAML document in block style, as its values come: scalars, and in an object a text that
/// is the name before each value. Every reader of YAML, of 1.1 as of 1.2, gets the same values from
/// it: texts that one of them would take for something else stand in double quotes. Raises
/// std::bad_alloc.
class YamlEmitter {
 public:
  /// \param text  gets what is written; outlives this
  explicit YamlEmitter(std::string& text);
  ~YamlEmitter() { yaml_emitter_delete(&emitter_); }
  YamlEmitter(const YamlEmitter&) = delete;
  YamlEmitter& operator=(const YamlEmitter&) = delete;

  /// Comes first, and once.
  void Begin();
  /// Comes last: everything is in the text then, with a line end.
  void End();

  /// \param type  object or array
  void Open(rapidjson::Type type);
  void Close(rapidjson::Type type);
  /// Of neither type. False, having written nothing, for what JSON cannot say either (see
  /// Json::Serialize).
  bool WriteScalar(const Json::Value& value);

 private:
  void Emit(yaml_event_t& event, int made);

  yaml_emitter_t emitter_{};
};

}  // namespace tarnctl
