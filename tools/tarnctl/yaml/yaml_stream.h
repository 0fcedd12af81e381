// YAML of a JSON text that comes in pieces.
#pragma once

#include "json/json.h"
#include "yaml/yaml_emitter.h"

#include <functional>
#include <string>
#include <string_view>

namespace tarnctl {

/// Turns one JSON text, however it is cut, into what WriteYaml makes of its value, without holding
/// either of them.
class YamlStream {
 public:
  /// \param write  gets the YAML piece by piece; what it throws passes through
  explicit YamlStream(std::function<void(std::string_view)> write);

  /// The next piece of the text. Raises std::runtime_error where a scalar in it is not JSON; for the
  /// rest the text is trusted.
  void Take(std::string_view piece);
  /// After the last piece.
  void End();

 private:
  enum class Inside { NOTHING, TEXT, SCALAR };

  void TakeOutside(char character);
  void TakeInText(char character);
  void EndScalar();
  void Flush();

  std::function<void(std::string_view)> write_;
  std::string yaml_;
  YamlEmitter emitter_;
  Inside inside_ = Inside::NOTHING;
  std::string scalar_;  // as far as it has come
  bool isEscaped_ = false;
};

}  // namespace tarnctl
