#include "yaml/yaml_events.h"

#include "json/json.h"
#include "json/utf8.h"
#include "yaml/yaml_reader.h"

#include <algorithm>
#include <array>
#include <new>

namespace tarnctl {
namespace {

[[noreturn]] void RaiseAt(std::string_view text, std::size_t offset, const std::string& reason) {
  const auto [line, column] = Json::ParseResult{false, offset, {}}.PlaceIn(text);
  RaiseYaml(line, column, reason);
}

std::size_t OffsetOfBadText(std::string_view text) {
  std::size_t offset = 0;
  while (const std::size_t length = Json::Utf8::SequenceLength(text.substr(offset))) {
    offset += length;
  }
  return offset;
}

// YAML 1.1, and libyaml, take these for line ends, and fold or trim what stands around them; for YAML
// 1.2 they are characters like any other.
constexpr std::array<std::string_view, 3> kLineEndsOfUnicode = {"\xC2\x85", "\xE2\x80\xA8",
                                                                "\xE2\x80\xA9"};

void RequirePlainCharacters(std::string_view text) {
  if (!Json::Utf8::IsValid(text)) {
    RaiseAt(text, OffsetOfBadText(text), "not UTF-8");
  }
  // For libyaml it is the end of the text.
  if (const std::size_t at = text.find('\0'); at != std::string_view::npos) {
    RaiseAt(text, at, "a NUL byte");
  }
  for (const std::string_view lineEnd : kLineEndsOfUnicode) {
    if (const std::size_t at = text.find(lineEnd); at != std::string_view::npos) {
      RaiseAt(text, at,
              "a line end of Unicode (U+0085, U+2028 or U+2029): write it as an escape in double "
              "quotes");
    }
  }
}

bool IsTagged(const yaml_event_t& event) {
  return (event.type == YAML_SCALAR_EVENT && event.data.scalar.tag != nullptr) ||
         (event.type == YAML_SEQUENCE_START_EVENT && event.data.sequence_start.tag != nullptr) ||
         (event.type == YAML_MAPPING_START_EVENT && event.data.mapping_start.tag != nullptr);
}

bool IsAnchored(const yaml_event_t& event) {
  return (event.type == YAML_SCALAR_EVENT && event.data.scalar.anchor != nullptr) ||
         (event.type == YAML_SEQUENCE_START_EVENT && event.data.sequence_start.anchor != nullptr) ||
         (event.type == YAML_MAPPING_START_EVENT && event.data.mapping_start.anchor != nullptr);
}

// A text that asks to be read by YAML 1.1 would mean something else.
bool HasDirective(const yaml_event_t& event) {
  const auto& start = event.data.document_start;
  return start.tag_directives.start != start.tag_directives.end ||
         (start.version_directive != nullptr && start.version_directive->minor < 2);
}

}  // namespace

void RaiseYaml(std::size_t line, std::size_t column, const std::string& reason) {
  throw YamlError("line " + std::to_string(line) + ", column " + std::to_string(column) + ": " +
                  reason);
}

void RaiseYaml(const yaml_mark_t& mark, const std::string& reason) {
  RaiseYaml(mark.line + 1, mark.column + 1, reason);
}

YamlEvents::YamlEvents(std::string_view text) : text_(text) {
  RequirePlainCharacters(text);
  if (yaml_parser_initialize(&parser_) == 0) {
    throw std::bad_alloc();
  }
  yaml_parser_set_input_string(&parser_, reinterpret_cast<const unsigned char*>(text.data()),
                               text.size());
}

void YamlEvents::RaiseFault() const {
  if (parser_.error == YAML_MEMORY_ERROR) {
    throw std::bad_alloc();
  }
  const std::string problem = parser_.problem != nullptr ? parser_.problem : "not YAML";
  if (parser_.error == YAML_READER_ERROR) {
    RaiseAt(text_, std::min(parser_.problem_offset, text_.size()), problem);
  }
  std::string context;
  if (parser_.context != nullptr) {
    context = std::string(", ") + parser_.context;
    if (parser_.context_mark.line != parser_.problem_mark.line) {
      context += " that begins in line " + std::to_string(parser_.context_mark.line + 1);
    }
  }
  RaiseYaml(parser_.problem_mark, problem + context);
}

void YamlEvents::Next(YamlEvent& event) {
  if (yaml_parser_parse(&parser_, event.Raw()) == 0) {
    RaiseFault();
  }
  const yaml_mark_t& mark = event->start_mark;
  if (event->type == YAML_ALIAS_EVENT || IsAnchored(*event.Raw())) {
    RaiseYaml(mark, "anchors and aliases are not read: write the value out");
  }
  if (IsTagged(*event.Raw())) {
    RaiseYaml(mark, "tags are not read: the type says what a value is");
  }
  if (event->type == YAML_DOCUMENT_START_EVENT) {
    if (HasDirective(*event.Raw())) {
      RaiseYaml(mark, "the text is to be read as YAML 1.2, without directives");
    }
    if (++documents_ > 1) {
      RaiseYaml(mark, "a second document begins here; one is read");
    }
  }
}

}  // namespace tarnctl
