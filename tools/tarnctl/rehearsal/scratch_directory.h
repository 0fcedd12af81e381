// A directory that is gone afterwards, whatever becomes of the tool.
#pragma once

#include "descriptor.h"

#include <string>
#include <sys/types.h>

namespace tarnctl {

/// A directory for files that nobody else may read, under TMPDIR or /tmp. A process of its own removes it
/// with all that is in it, as soon as this object is gone or the tool was ended, killed even. Raises
/// ToolError FAILED when it cannot be made. To be made while the tool has one thread.
class ScratchDirectory {
 public:
  ScratchDirectory();
  /// Waits for the removal.
  ~ScratchDirectory();
  ScratchDirectory(const ScratchDirectory&) = delete;
  ScratchDirectory& operator=(const ScratchDirectory&) = delete;

  const std::string& Path() const { return path_; }
  /// The directory that it lies in.
  std::string Place() const { return path_.substr(0, path_.rfind('/')); }

 private:
  std::string path_;
  Descriptor lifeline_{-1};  // of a pipe whose other end tells the sweeper when this one is closed
  pid_t sweeper_ = -1;
};

}  // namespace tarnctl
