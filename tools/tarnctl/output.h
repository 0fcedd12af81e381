// Standard output: data and nothing else.
#pragma once

#include "json_text.h"

#include <string>

namespace tarnctl {

/// Prints data. All operations raise ToolError FAILED when standard output takes no more.
class Output {
 public:
  explicit Output(bool asJson) : asJson_(asJson) {}

  bool AsJson() const { return asJson_; }

  /// JSON, indented by two blanks.
  void Print(const Json& value) const;
  /// The same for text that may be bytes of any kind, as file names are: what is no UTF-8 is
  /// replaced.
  void PrintLenient(const Json& value) const;
  /// A scalar bare, texts without quotes, unless JSON was asked for; anything else as Print does.
  void PrintMember(const Json& value) const;
  /// Lines as they stand.
  void PrintText(const std::string& text) const;

 private:
  bool asJson_;
};

}  // namespace tarnctl
