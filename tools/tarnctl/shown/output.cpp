#include "shown/output.h"

#include "failure.h"
#include "json/print.h"
#include "yaml/yaml_writer.h"

#include <cerrno>
#include <cstdio>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace tarnctl {

Json::Value JsonMaker::Parse(std::string_view text) {
  Json::Document document(&pool_);
  if (const auto parsed = Json::Parse(text, document); !parsed) {
    throw std::runtime_error("the library said what is not JSON: " + parsed.Describe(text));
  }
  return std::move(static_cast<Json::Value&>(document));
}

void Output::PrintText(const std::string& text) const {
  if (into_ != nullptr) {
    *into_ += text;
    return;
  }
  // Flushed at once: what the stream still held at exit could fail to be written without anybody
  // seeing it.
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0) {
    const int error = errno;
    Failure failure;
    failure.message = "cannot write to standard output: " + std::generic_category().message(error);
    failure.hasNoReader = error == EPIPE;
    throw ToolError(std::move(failure));
  }
}

std::string Output::Formatted(const Json::Value& value) const {
  std::string text;
  const bool printed = format_ == Format::YAML ? WriteYaml(value, text)
                                               : Json::Print(value, Json::Layout::INDENTED,
                                                             Json::BadText::REFUSED, text);
  if (!printed) {
    throw ToolError(ExitCode::FAILED, "cannot print what is not UTF-8");
  }
  return text;
}

void Output::Print(const Json::Value& value) const {
  PrintText(Formatted(value) + (format_ == Format::YAML ? "" : "\n"));
}

void ListPrinter::Add(const Json::Value& element) {
  constexpr std::size_t kMuch = 65536;
  if (output_.format_ == Format::YAML) {
    JsonMaker make;
    Json::Value list(rapidjson::kArrayType);
    list.PushBack(Json::Value(element, make.GetAllocator()), make.GetAllocator());
    text_ = (isEmpty_ ? "" : std::move(text_)) + output_.Formatted(list);
    isEmpty_ = false;
    return;
  }
  text_ += isEmpty_ ? "\n  " : ",\n  ";
  isEmpty_ = false;
  for (const char character : output_.Formatted(element)) {  // line ends inside texts are escaped
    text_ += character;
    text_ += character == '\n' ? "  " : "";
  }
  if (text_.size() > kMuch) {
    output_.PrintText(text_);
    text_.clear();
  }
}

void ListPrinter::End() {
  const char* const end = isEmpty_ ? "]\n" : output_.format_ == Format::YAML ? "" : "\n]\n";
  output_.PrintText(text_ + end);
}

void Output::PrintLenient(const Json::Value& value) const {
  std::string text;
  Json::Print(value, Json::Layout::INDENTED, Json::BadText::REPAIRED, text);
  JsonMaker make;
  PrintText(format_ == Format::YAML ? Formatted(make.Parse(text)) : text + "\n");
}

void Output::PrintRecord(const Json::Value& value) const {
  std::string line;
  Json::Print(value, Json::Layout::ONE_LINE, Json::BadText::REPAIRED, line);
  JsonMaker make;
  PrintText(format_ == Format::YAML ? "---\n" + Formatted(make.Parse(line)) : line + "\n");
}

void Output::PrintMember(const Json::Value& value) const {
  if (value.IsString() && !AsData()) {
    PrintText(std::string(Json::Text(value)) + "\n");
  } else {
    Print(value);
  }
}

}  // namespace tarnctl
