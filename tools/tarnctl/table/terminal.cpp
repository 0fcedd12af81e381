#include "table/terminal.h"

#include <charconv>
#include <cstdlib>
#include <string_view>
#include <sys/ioctl.h>
#include <unistd.h>

namespace tarnctl {
namespace {

std::string_view Environment(const char* name) {
  const char* const value = std::getenv(name);
  return value != nullptr ? value : std::string_view();
}

std::size_t WidthOfTerminal(int descriptor) {
  constexpr std::size_t kUsual = 80;
  const std::string_view wanted = Environment("COLUMNS");
  std::size_t width = 0;
  const auto read = std::from_chars(wanted.data(), wanted.data() + wanted.size(), width);
  if (read.ec == std::errc() && read.ptr == wanted.data() + wanted.size() && width > 0) {
    return width;
  }
  winsize size{};
  return ::ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kUsual;
}

}  // namespace

Terminal Terminal::Of(int descriptor) {
  Terminal terminal;
  terminal.isOne = ::isatty(descriptor) != 0;
  if (terminal.isOne) {
    const std::string_view kind = Environment("TERM");
    terminal.showsColours =
        Environment("NO_COLOR").empty() && !kind.empty() && kind != "dumb";  // https://no-color.org
    terminal.width = WidthOfTerminal(descriptor);
  }
  return terminal;
}

std::string Terminal::Coloured(const std::string& text, const char* colour) const {
  constexpr const char* kEnd = "\033[0m";
  return showsColours && *colour != '\0' ? colour + text + kEnd : text;
}

}  // namespace tarnctl
