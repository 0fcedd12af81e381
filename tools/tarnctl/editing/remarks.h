// What is told to who edits a text, in the text itself.
#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <vector>

namespace tarnctl {

struct Remark {
  std::size_t line;  ///< above which it stands; 0 for the beginning of the text
  std::string text;
};

/// Puts remarks into a text as lines of their own, and takes them out again: these very lines, and at its
/// beginning those that were made of them. So a text loses none of its own, whatever language it is in.
class RemarkedText {
 public:
  /// The text with the remarks, those of a line indented as it is.
  std::string With(const std::string& text, const std::vector<Remark>& remarks);
  /// What is left of a text without the remarks that were put in last.
  std::string Without(const std::string& text) const;

 private:
  std::set<std::string> lines_;
};

}  // namespace tarnctl
