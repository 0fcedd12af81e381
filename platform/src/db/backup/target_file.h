// The file that a backup becomes.
#pragma once

#include "platform/file_descriptor.h"

#include <string>

namespace DBStore::internal {

/// A file that gets its name when it is whole. Until then it lies beside it under a name that nobody
/// else uses, and is removed where it never becomes whole. Raises std::runtime_error, reported.
class TargetFile {
 public:
  /// \param replace  whether it may take the place of a regular file; of anything else it never does
  TargetFile(const std::string& path, bool replace);
  ~TargetFile();
  TargetFile(const TargetFile&) = delete;
  TargetFile& operator=(const TargetFile&) = delete;

  /// Makes the file, for its owner alone; anew where it was made before.
  FileDescriptor Make();
  void GiveName();

 private:
  void CheckPlace() const;
  void RemoveDraft() noexcept;

  const std::string path_;
  const bool replace_;
  FileDescriptor directory_;
  std::string name_;   // in the directory
  std::string draft_;  // likewise; empty while there is none
};

}  // namespace DBStore::internal
