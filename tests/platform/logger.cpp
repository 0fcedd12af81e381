// The log: standard error, unless there is a sink.
#include "platform/logger.h"

#include "platform/error_messages.h"

#include "json/utf8.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <string>

namespace CSLogger {
namespace {

std::atomic<int> level{2};
std::mutex sinkLock;

Sink& sink = *new Sink;

void Write(int priority, const std::string& head, const char* format, va_list arguments) try {
  if (!IsEnabled(priority)) {
    return;
  }
  char text[8192];
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  std::vsnprintf(text, sizeof text, format, arguments);
  const std::string line = Json::Utf8::WithoutControls(head + text);
  const std::lock_guard guard(sinkLock);
  if (sink) {
    sink(priority, line.c_str());
  } else {
    std::fprintf(stderr, "%s\n", line.c_str());
  }
} catch (...) {
  // A line that cannot be logged is lost; whoever logs must not fail over it.
}

}  // namespace

void Log(int priority, const char* format, ...) noexcept {
  va_list arguments;
  va_start(arguments, format);
  Write(priority, "", format, arguments);
  va_end(arguments);
}

void LogErrCode(int priority, int code, ...) noexcept {
  va_list arguments;
  va_start(arguments, code);
  Write(priority, "[" + std::to_string(code) + "] ",
        ErrorMessageForId(static_cast<TarnConfigStore::CSErrorCodes>(code)), arguments);
  va_end(arguments);
}

void LogBacktrace() noexcept {}

bool IsEnabled(int priority) noexcept {
  return priority <= level;
}

void SetSink(Sink next) {
  const std::lock_guard guard(sinkLock);
  sink = std::move(next);
}

void SetLevel(int priority) noexcept {
  level = priority;
}

}  // namespace CSLogger
