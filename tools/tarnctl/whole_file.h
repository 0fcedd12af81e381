// A file that is written as a whole.
#pragma once

#include "descriptor.h"

#include <string>
#include <string_view>

namespace tarnctl {

/// Writes a file beside the one that it takes the place of at Commit. Until then, and
/// when anything fails, what was there stays, and nothing is left of the new file: not when SIGINT,
/// SIGTERM or SIGHUP end the process either. All operations raise ToolError FAILED, with the path and
/// the reason. One at a time, on the main thread.
class WholeFile {
 public:
  enum class Readers {
    OWNER,  ///< mode 0600: what is written may hold secrets
    ALL,    ///< those whom the process's mask lets read
  };

  /// \param path  of a regular file, or of nothing yet; symbolic links to one are followed
  explicit WholeFile(const std::string& path, Readers readers = Readers::OWNER);
  ~WholeFile();
  WholeFile(const WholeFile&) = delete;
  WholeFile& operator=(const WholeFile&) = delete;

  void Write(std::string_view text);
  /// Returns once the file will outlive a crash of the host.
  void Commit();

 private:
  [[noreturn]] void Fail(int error) const;
  std::string Directory() const;
  void SyncDirectory() const;

  const std::string path_;    // as it was given
  const std::string target_;  // without links
  const Readers readers_;
  std::string temporary_;  // empty once it has become the target
  Descriptor file_{-1};
};

}  // namespace tarnctl
