#include "editing/remarks.h"

#include "json/utf8.h"

#include <algorithm>
#include <functional>
#include <string_view>

namespace tarnctl {
namespace {

constexpr const char* kRemark = "#! ";

void ForEachLine(std::string_view text, const std::function<void(std::string_view line)>& visit) {
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size() - 1) + 1;
    visit(text.substr(0, end));
    text.remove_prefix(end);
  }
}

}  // namespace

std::string RemarkedText::With(const std::string& text, const std::vector<Remark>& remarks) {
  lines_.clear();
  std::string remarked;
  const auto add = [&](std::size_t number, std::string_view indent) {
    for (const Remark& remark : remarks) {
      if (remark.line == number) {
        const std::string line =
            std::string(indent) + kRemark + Json::Utf8::WithoutControls(remark.text);
        lines_.insert(line);
        remarked += line + "\n";
      }
    }
  };
  add(0, {});
  std::size_t number = 0;
  ForEachLine(text, [&](std::string_view line) {
    add(++number, line.substr(0, std::min(line.find_first_not_of(' '), line.size())));
    remarked += line;
  });
  return remarked;
}

std::string RemarkedText::Without(const std::string& text) const {
  std::string own;
  ForEachLine(text, [&](std::string_view line) {
    const std::string bare(line.substr(0, line.find_last_not_of("\r\n") + 1));
    const bool isChangedRemark = own.empty() && line.starts_with(kRemark);
    if (!isChangedRemark && !lines_.contains(bare)) {
      own += line;
    }
  });
  return own;
}

}  // namespace tarnctl
