#include "tarnconfigstore/doctor.h"
#include "tarnconfigstore/host.h"

#include "advice/advice.h"
#include "failure.h"
#include "verbs/verbs.h"
#include "watch/watch_loop.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <limits>
#include <sys/eventfd.h>
#include <system_error>
#include <unistd.h>

namespace tarnctl {
namespace {

// Where the library announces changes, in the working directory.
constexpr const char* kNotificationSocket = "kslLocalSocketKeeldNotifyWisp";

constexpr const char* kSocket = "--socket";
constexpr const char* kCount = "--count";

// Open until the process is gone, since the handler stays.
std::atomic<int> stopDescriptor{-1};

extern "C" void RequestStop(int /*signal*/) {
  const int error = errno;
  const std::uint64_t one = 1;
  if (::write(stopDescriptor.load(std::memory_order_relaxed), &one, sizeof one) < 0) {
    // Full: it has been asked for often enough.
  }
  errno = error;
}

// From the first call on, SIGINT, SIGTERM and SIGHUP no longer end the process, unless they were
// ignored: they make the descriptor that is returned readable, for good.
int CatchStopSignals() {
  if (stopDescriptor < 0) {
    const int descriptor = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (descriptor < 0) {
      throw ToolError(ExitCode::FAILED,
                      "cannot wait for signals: " + std::generic_category().message(errno));
    }
    stopDescriptor = descriptor;
  }
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction action {};
    ::sigaction(signal, nullptr, &action);
    if (action.sa_handler != SIG_IGN) {
      // Without SA_RESTART, so that output nobody reads is given up too.
      struct sigaction stop {};
      stop.sa_handler = RequestStop;
      ::sigaction(signal, &stop, nullptr);
    }
  }
  return stopDescriptor;
}

// In UTC, with milliseconds.
std::string Now() {
  using std::chrono::milliseconds;
  const auto now = std::chrono::system_clock::now();
  const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
  const auto fraction =
      std::chrono::duration_cast<milliseconds>(now.time_since_epoch()) % std::chrono::seconds(1);
  std::tm parts{};
  ::gmtime_r(&seconds, &parts);
  char date[32];
  char text[48];
  std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &parts);
  std::snprintf(text, sizeof text, "%s.%03dZ", date, static_cast<int>(fraction.count()));
  return text;
}

void Print(const Notification& notification, const Output& output) {
  for (const std::string& object : notification.objects) {
    JsonMaker make;
    output.PrintRecord(make.Object("time", Now(), "object", object, "pid", notification.process));
  }
}

// Each program announces in its own working directory.
std::string WhoseAnnouncements(const std::string& path) {
  std::error_code error;
  const std::string directory = std::filesystem::current_path(error).string();
  return path.front() == '/' || error ? "" : ", for programs that work in " + directory;
}

// Nothing of this keeps it from listening: it may be put right meanwhile.
void WarnOfSilence(const Output& output) {
  Findings obstacles;
  for (const auto& finding : TarnConfigStore::ExamineNotification()) {
    const std::string root = TarnConfigStore::GetHostRoot();
    obstacles.push_back({UnderRoot(finding.file, root),
                         UnderRoot(finding.message, root) + " (" + finding.advice + ")"});
  }
  if (!obstacles.empty()) {
    Report({ExitCode::DONE, TarnConfigStore::CS_GENERIC, "this stands in the way of announcements",
            obstacles},
           output.AsJson());
  }
}

void Watch(const Given& given, const Output& output) {
  const std::string path = given.Has(kSocket) ? given.Text(kSocket) : kNotificationSocket;
  const int stop = CatchStopSignals();
  const WatchSocket socket(path);
  Say("listening on " + path + WhoseAnnouncements(path));
  WarnOfSilence(output);
  WatchLoop loop(
      socket, stop, given.Number(kCount),
      [&](const Notification& notification) { Print(notification, output); }, output.AsJson());
  try {
    loop.Run();
  } catch (const ToolError&) {
    const bool isOutputAbandoned = HasEvent(STDOUT_FILENO, 0);
    if (!HasEvent(stop, POLLIN) && !isOutputAbandoned) {
      throw;
    }
  }
}

}  // namespace

Verb WatchVerb() {
  return {.name = "watch",
          .help = "Print the notifications of changes as they arrive, one line of JSON each",
          .arguments = {{.name = kSocket, .help = "Listen there instead", .valueName = "PATH"},
                        {.name = kCount,
                         .help = "End after so many",
                         .valueName = "N",
                         .range = NumberRange{1, std::numeric_limits<std::uint64_t>::max()}}},
          .run = Watch};
}

}  // namespace tarnctl
