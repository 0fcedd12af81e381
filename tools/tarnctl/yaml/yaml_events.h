// The events of a YAML text, and what libyaml leaves unsaid about it.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <yaml.h>

namespace tarnctl {

/// Raises YamlError with the place before the reason.
[[noreturn]] void RaiseYaml(std::size_t line, std::size_t column, const std::string& reason);
[[noreturn]] void RaiseYaml(const yaml_mark_t& mark, const std::string& reason);

/// An event, and the end of its memory.
class YamlEvent {
 public:
  YamlEvent() = default;
  ~YamlEvent() { yaml_event_delete(&event_); }
  YamlEvent(const YamlEvent&) = delete;
  YamlEvent& operator=(const YamlEvent&) = delete;

  yaml_event_t* operator->() { return &event_; }
  yaml_event_t* Raw() { return &event_; }
  /// Of a scalar.
  std::string_view Text() const {
    return {reinterpret_cast<const char*>(event_.data.scalar.value), event_.data.scalar.length};
  }

 private:
  yaml_event_t event_{};
};

/// Hands on the events of a text that can mean one thing only: no aliases, anchors, tags or
/// directives, and no more than one document. Raises YamlError.
class YamlEvents {
 public:
  /// \param text  outlives this
  explicit YamlEvents(std::string_view text);
  ~YamlEvents() { yaml_parser_delete(&parser_); }
  YamlEvents(const YamlEvents&) = delete;
  YamlEvents& operator=(const YamlEvents&) = delete;

  void Next(YamlEvent& event);

 private:
  [[noreturn]] void RaiseFault() const;

  std::string_view text_;
  yaml_parser_t parser_{};
  std::size_t documents_ = 0;
};

}  // namespace tarnctl
