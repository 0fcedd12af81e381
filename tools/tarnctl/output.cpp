#include "output.h"

#include "failure.h"

#include <cerrno>
#include <cstdio>
#include <system_error>

namespace tarnctl {

void Output::PrintText(const std::string& text) const {
  // Flushed at once: what the stream still held at exit could fail to be written without anybody
  // seeing it.
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0) {
    throw ToolError(ExitCode::FAILED,
                    "cannot write to standard output: " + std::generic_category().message(errno));
  }
}

void Output::Print(const Json& value) const {
  PrintText(value.dump(2) + "\n");
}

void Output::PrintLenient(const Json& value) const {
  PrintText(value.dump(2, ' ', false, Json::error_handler_t::replace) + "\n");
}

void Output::PrintMember(const Json& value) const {
  if (value.is_string() && !asJson_) {
    PrintText(value.get_ref<const std::string&>() + "\n");
  } else {
    Print(value);
  }
}

}  // namespace tarnctl
