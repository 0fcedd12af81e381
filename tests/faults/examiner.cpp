#include "faults/examiner.h"

#include "faults/faulty_host.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <stdexcept>
#include <sys/prctl.h>

namespace Faults {
namespace {

// Longer than any answer takes: one that does not come is a failure, not a test that hangs.
constexpr time_t kSeconds = 60;

void AwaitOrRaise(sem_t& semaphore) {
  timespec until{};
  clock_gettime(CLOCK_REALTIME, &until);
  until.tv_sec += kSeconds;
  while (sem_timedwait(&semaphore, &until) != 0) {
    if (errno != EINTR) {
      throw std::runtime_error("nobody looks at the host any more");
    }
  }
}

}  // namespace

Examiner::Desk::Desk() {
  constexpr int kAmongProcesses = 1;
  sem_init(&asked, kAmongProcesses, 0);
  sem_init(&answered, kAmongProcesses, 0);
}

Examiner::Examiner(const std::string& root) {
  process_.emplace([this, root] { return Serve(root); });
}

Examiner::~Examiner() {
  desk_->task = Task::END;
  sem_post(&desk_->asked);
}

int Examiner::Serve(const std::string& root) const {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  FaultyHost host(root);
  for (;;) {
    while (sem_wait(&desk_->asked) != 0) {
    }
    const unsigned question = desk_->question;
    desk_->failed = false;
    std::string text;
    try {
      switch (desk_->task) {
        case Task::LOOK:
          desk_->states[0] = host.Look();
          break;
        case Task::RESTORE:
          host.Restore();
          break;
        case Task::LOCKED:
          text = host.Locked();
          break;
        case Task::DIFFERENCES:
          text = host.Differences(desk_->states[0], desk_->states[1]);
          break;
        case Task::LEAVE:
          host.Leave();
          break;
        case Task::END:
          return 0;
      }
    } catch (const std::exception& failure) {
      desk_->failed = true;
      text = failure.what();
    }
    std::snprintf(desk_->text, sizeof desk_->text, "%s", text.c_str());
    desk_->answer = question;
    sem_post(&desk_->answered);
  }
}

// Who asked before may have died before it had its answer: that one is waited for, and not taken for ours.
const Examiner::Desk& Examiner::Ask(Task task, unsigned before, unsigned now) const {
  const auto await = [this] {
    while (desk_->answer != desk_->question) {
      AwaitOrRaise(desk_->answered);
    }
  };
  await();
  desk_->task = task;
  desk_->states[0] = before;
  desk_->states[1] = now;
  ++desk_->question;
  sem_post(&desk_->asked);
  await();
  if (desk_->failed) {
    throw std::runtime_error(desk_->text);
  }
  return *desk_;
}

unsigned Examiner::Look() const {
  return Ask(Task::LOOK).states[0];
}

void Examiner::Restore() const {
  Ask(Task::RESTORE);
}

std::string Examiner::Locked() const {
  return Ask(Task::LOCKED).text;
}

std::string Examiner::Differences(unsigned before, unsigned now) const {
  return Ask(Task::DIFFERENCES, before, now).text;
}

void Examiner::Leave() const {
  Ask(Task::LEAVE);
}

}  // namespace Faults
