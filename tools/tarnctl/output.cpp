#include "output.h"

#include "failure.h"
#include "json/print.h"

#include <cerrno>
#include <cstdio>
#include <stdexcept>
#include <system_error>

namespace tarnctl {

Json::Value JsonMaker::Parse(std::string_view text) {
  Json::Document document(&pool_);
  if (const auto parsed = Json::Parse(text, document); !parsed) {
    throw std::runtime_error("the library said what is not JSON: " + parsed.Describe(text));
  }
  return std::move(static_cast<Json::Value&>(document));
}

void Output::PrintText(const std::string& text) const {
  // Flushed at once: what the stream still held at exit could fail to be written without anybody
  // seeing it.
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0) {
    throw ToolError(ExitCode::FAILED,
                    "cannot write to standard output: " + std::generic_category().message(errno));
  }
}

namespace {

std::string Indented(const Json::Value& value) {
  std::string text;
  if (!Json::Print(value, Json::Layout::INDENTED, Json::BadText::REFUSED, text)) {
    throw ToolError(ExitCode::FAILED, "cannot print what is not UTF-8 as JSON");
  }
  return text;
}

}  // namespace

void Output::Print(const Json::Value& value) const {
  PrintText(Indented(value) + "\n");
}

void ListPrinter::Add(const Json::Value& element) {
  constexpr std::size_t kMuch = 65536;
  text_ += isEmpty_ ? "\n  " : ",\n  ";
  isEmpty_ = false;
  for (const char character : Indented(element)) {  // line ends inside texts are escaped
    text_ += character;
    text_ += character == '\n' ? "  " : "";
  }
  if (text_.size() > kMuch) {
    output_.PrintText(text_);
    text_.clear();
  }
}

void ListPrinter::End() {
  output_.PrintText(text_ + (isEmpty_ ? "]\n" : "\n]\n"));
}

void Output::PrintLenient(const Json::Value& value) const {
  std::string text;
  Json::Print(value, Json::Layout::INDENTED, Json::BadText::REPAIRED, text);
  PrintText(text + "\n");
}

void Output::PrintMember(const Json::Value& value) const {
  if (value.IsString() && !asJson_) {
    PrintText(std::string(Json::Text(value)) + "\n");
  } else {
    Print(value);
  }
}

}  // namespace tarnctl
