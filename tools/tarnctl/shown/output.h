// Standard output: data and nothing else.
#pragma once

#include "json_maker.h"

#include <string>

namespace tarnctl {

/// How data is printed.
enum class Format { PLAIN, JSON, YAML };

/// Prints data. All operations raise ToolError FAILED when standard output takes no more.
class Output {
 public:
  /// \param into  gets what is printed, in the place of standard output
  explicit Output(Format format, std::string* into = nullptr) : format_(format), into_(into) {}

  bool AsJson() const { return format_ == Format::JSON; }
  /// For whoever reads it as data, even where people get something shorter.
  bool AsData() const { return format_ != Format::PLAIN; }

  /// YAML where that was asked for, else JSON, indented by two blanks. Raises ToolError FAILED for text that is not UTF-8.
  void Print(const Json::Value& value) const;
  /// The same for text that may be bytes of any kind, as file names are: what is no UTF-8 is
  /// replaced.
  void PrintLenient(const Json::Value& value) const;
  /// A scalar bare, texts without quotes, unless data was asked for; anything else as Print does.
  void PrintMember(const Json::Value& value) const;
  /// One of many values that come as they happen: a line of JSON, or a YAML document. Lenient.
  void PrintRecord(const Json::Value& value) const;
  /// Lines as they stand.
  void PrintText(const std::string& text) const;

 private:
  friend class ListPrinter;
  std::string Formatted(const Json::Value& value) const;

  Format format_;
  std::string* into_;
};

/// Prints an array as Output::Print does, element by element. What has been printed when something
/// fails lacks its end, so that nobody takes it for the whole; little is printed at End only, and
/// all of it in YAML, where a list has no end that could be missing.
class ListPrinter {
 public:
  explicit ListPrinter(const Output& output) : output_(output) {}
  /// Raises as Output::Print, as End does.
  void Add(const Json::Value& element);
  void End();

 private:
  const Output& output_;
  std::string text_ = "[";
  bool isEmpty_ = true;
};

}  // namespace tarnctl
