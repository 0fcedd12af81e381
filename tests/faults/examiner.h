// Who looks at the host after every fault: a process of its own.
#pragma once

#include "support/child_process.h"
#include "support/shared_memory.h"

#include <atomic>
#include <optional>
#include <semaphore.h>
#include <string>

namespace Faults {

/// Serves the processes in which calls fail, one at a time. It knows the host from before, which they
/// do not, and holds none of their locks. What it cannot do raises std::runtime_error in who asked.
class Examiner {
 public:
  /// Of the host under a root that FaultyHost::Save was told of.
  explicit Examiner(const std::string& root);
  ~Examiner();

  /// Equal numbers are equal states.
  unsigned Look() const;
  void Restore() const;
  /// "" or which lock somebody holds on the host's databases.
  std::string Locked() const;
  std::string Differences(unsigned before, unsigned now) const;
  /// Closes the databases, so that whoever opens them next is the first.
  void Leave() const;

 private:
  enum class Task { LOOK, RESTORE, LOCKED, DIFFERENCES, LEAVE, END };
  struct Desk {
    Desk();
    sem_t asked;
    sem_t answered;
    Task task = Task::END;
    unsigned question = 0;
    std::atomic<unsigned> answer = 0;  // the number of the last question that has one
    unsigned states[2] = {};
    bool failed = false;
    char text[std::size_t{1} << 14] = {};
  };

  int Serve(const std::string& root) const;
  const Desk& Ask(Task task, unsigned before = 0, unsigned now = 0) const;

  TestSupport::SharedMemory<Desk> desk_;
  std::optional<TestSupport::ChildProcess> process_;
};

}  // namespace Faults
