#include "platform/logger.h"

#include "platform/error_messages.h"
#include "platform/process_locks.h"

#include "json/utf8.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <execinfo.h>
#include <memory>
#include <string>
#include <syslog.h>
#include <utility>

namespace CSLogger {
namespace {

constinit std::atomic<int> level{kOutcome};

// Under the lock; null for the system log. Not destroyed: there are callers while the process exits.
constinit Sink* theSink = nullptr;

int SyslogPriority(int priority) {
  switch (priority) {
    case kFailure:
      return LOG_ERR;
    case kProblem:
      return LOG_WARNING;
    case kOutcome:
      return LOG_NOTICE;
    case kWriteCall:
      return LOG_INFO;
    default:
      return LOG_DEBUG;
  }
}

void Write(int priority, const std::string& text) {
  const std::string safe = Json::Utf8::WithoutControls(text);
  const char* line = safe.c_str();
  const ProcessLocks::Guard guard(ProcessLocks::Rank::LOG);
  if (theSink != nullptr) {
    (*theSink)(priority, line);
  } else {
    // Called directly and without openlog: the name and the options are the calling program's.
    syslog(SyslogPriority(priority), "%s", line);
  }
}

std::string FormatList(const char* format, va_list arguments) {
  va_list again;
  va_copy(again, arguments);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  // The caller has started the list. NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized)
  const int length = std::vsnprintf(nullptr, 0, format, arguments);
  std::string text(length > 0 ? static_cast<std::size_t>(length) : 0, '\0');
  if (length > 0) {
    std::vsnprintf(text.data(), text.size() + 1, format, again);
  }
#pragma GCC diagnostic pop
  va_end(again);
  return text;
}

}  // namespace

bool IsEnabled(int priority) noexcept {
  return priority <= level.load(std::memory_order_relaxed);
}

void Log(int priority, const char* format, ...) noexcept {
  if (!IsEnabled(priority)) {
    return;
  }
  va_list arguments;
  va_start(arguments, format);
  try {
    Write(priority, FormatList(format, arguments));
  } catch (...) {
    // A line that cannot be logged is lost; whoever logs must not fail over it.
  }
  va_end(arguments);
}

void LogErrCode(int priority, int code, ...) noexcept {
  if (!IsEnabled(priority)) {
    return;
  }
  va_list arguments;
  va_start(arguments, code);
  try {
    const char* message = ErrorMessageForId(static_cast<TarnConfigStore::CSErrorCodes>(code));
    std::string line = "[";
    line.append(std::to_string(code)).append("] ").append(FormatList(message, arguments));
    Write(priority, line);
  } catch (...) {
    // As in Log.
  }
  va_end(arguments);
}

void LogBacktrace() noexcept {
  if (!IsEnabled(kTrace)) {
    return;
  }
  constexpr int kMaxFrames = 64;
  void* frames[kMaxFrames];
  const int count = backtrace(frames, kMaxFrames);
  const auto release = [](char** symbols) { std::free(static_cast<void*>(symbols)); };
  const std::unique_ptr<char*[], decltype(release)> symbols(backtrace_symbols(frames, count),
                                                            release);
  for (int i = 0; symbols && i < count; ++i) {
    Log(kTrace, "  #%d %s", i, symbols[static_cast<std::size_t>(i)]);
  }
}

void SetSink(Sink sink) {
  std::unique_ptr<Sink> next = sink ? std::make_unique<Sink>(std::move(sink)) : nullptr;
  const ProcessLocks::Guard guard(ProcessLocks::Rank::LOG);
  next.reset(std::exchange(theSink, next.release()));
}

void SetLevel(int priority) noexcept {
  level.store(priority, std::memory_order_relaxed);
}

}  // namespace CSLogger
