#include "given/secret_input.h"

#include "failure.h"
#include "given/hidden_terminal.h"
#include "given/input_file.h"

#include <cstddef>
#include <unistd.h>
#include <utility>

namespace tarnctl {
namespace {

std::vector<std::string> Lines(std::string text) {
  if (!text.empty() && text.back() != '\n') {
    text += '\n';
  }
  std::vector<std::string> lines;
  for (std::size_t at = 0, end = 0; at < text.size(); at = end + 1) {
    end = text.find('\n', at);
    lines.push_back(text.substr(at, end - at));
  }
  return lines;
}

std::vector<std::string> ReadFromTerminal(const std::vector<std::string>& members) {
  std::vector<std::string> values;
  values.reserve(members.size());
  for (const std::string& member : members) {
    values.push_back(ReadHiddenLine(STDIN_FILENO, member));
  }
  return values;
}

// Nothing at all is a mistake, not an empty secret: somebody forgot to give it.
[[noreturn]] void RaiseMissing(const std::vector<std::string>& members, std::size_t count) {
  throw ToolError(ExitCode::USAGE, "standard input gives " + std::to_string(count) +
                                       " values for " + std::to_string(members.size()) +
                                       " members, beginning with \"" + members.front() + "\"");
}

}  // namespace

std::vector<std::string> ReadSecrets(const std::vector<std::string>& members) {
  if (members.empty()) {
    return {};
  }
  if (::isatty(STDIN_FILENO) != 0) {
    return ReadFromTerminal(members);
  }
  std::string text = ReadInput("-");
  if (members.size() == 1 && !text.empty()) {
    if (text.back() == '\n') {
      text.pop_back();
    }
    return {std::move(text)};
  }
  std::vector<std::string> values = Lines(std::move(text));
  if (values.size() != members.size()) {
    RaiseMissing(members, values.size());
  }
  return values;
}

}  // namespace tarnctl
