#include "shown/progress.h"

#include "json/utf8.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <exception>
#include <unistd.h>
#include <utility>

namespace tarnctl {
namespace {

constexpr const char* kEmptyLine = "\r\033[K";

}  // namespace

Progress::Progress(std::string what) : what_(std::move(what)) {
  if (::isatty(STDERR_FILENO) == 0) {
    return;
  }
  // Signals are for the thread that does the work: the other one inherits that it takes none.
  sigset_t all;
  sigset_t before;
  ::sigfillset(&all);
  ::pthread_sigmask(SIG_SETMASK, &all, &before);
  try {
    thread_ = std::thread([this] { Run(); });
  } catch (const std::exception&) {
    // Then nothing is shown.
  }
  ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

Progress::~Progress() {
  if (thread_.joinable()) {
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      isOver_ = true;
    }
    wake_.notify_one();
    thread_.join();
  }
}

void Progress::Run() {
  std::unique_lock<std::mutex> lock(mutex_);
  long seconds = 0;
  while (!wake_.wait_for(lock, std::chrono::seconds(1), [this] { return isOver_; })) {
    Show(++seconds);
  }
  if (seconds > 0) {
    std::fputs(kEmptyLine, stderr);
  }
}

void Progress::Show(long seconds) const {
  constexpr std::size_t kMegabyte = 1000000;
  std::string line = kEmptyLine;
  line.append("tarnctl: ").append(Json::Utf8::WithoutControls(what_)).append(", ");
  if (const std::size_t megabytes = bytes_ / kMegabyte; megabytes > 0) {
    line.append(std::to_string(megabytes)).append(" MB, ");
  }
  line.append(std::to_string(seconds)).append(" s");
  std::fputs(line.c_str(), stderr);
}

}  // namespace tarnctl
