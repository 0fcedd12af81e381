// Standard output: data and nothing else.
#pragma once

#include "json_maker.h"

#include <string>

namespace tarnctl {

/// Prints data. All operations raise ToolError FAILED when standard output takes no more.
class Output {
 public:
  explicit Output(bool asJson) : asJson_(asJson) {}

  bool AsJson() const { return asJson_; }

  /// JSON, indented by two blanks. Raises ToolError FAILED for text that is not UTF-8.
  void Print(const Json::Value& value) const;
  /// The same for text that may be bytes of any kind, as file names are: what is no UTF-8 is
  /// replaced.
  void PrintLenient(const Json::Value& value) const;
  /// A scalar bare, texts without quotes, unless JSON was asked for; anything else as Print does.
  void PrintMember(const Json::Value& value) const;
  /// Lines as they stand.
  void PrintText(const std::string& text) const;

 private:
  bool asJson_;
};

/// Prints an array as Output::Print does, element by element. What has been printed when something
/// fails lacks its end, so that nobody takes it for the whole; little is printed at End only.
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
