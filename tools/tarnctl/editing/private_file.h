// A text that is given to an editor.
#pragma once

#include <string>

namespace tarnctl {

/// A file that nobody else may read, alone in a directory of its own, below TMPDIR or /tmp. Both go with
/// it, with all that the editor put beside it, unless the text is kept. All operations raise ToolError
/// FAILED, with the path and the reason.
class PrivateFile {
 public:
  /// \param name  of the file
  explicit PrivateFile(const std::string& name);
  ~PrivateFile();
  PrivateFile(const PrivateFile&) = delete;
  PrivateFile& operator=(const PrivateFile&) = delete;

  const std::string& Path() const { return path_; }
  void Write(const std::string& text) const;
  std::string Read() const;
  /// From now on it stays.
  void Keep() { isKept_ = true; }

 private:
  std::string directory_;
  std::string path_;
  bool isKept_ = false;
};

}  // namespace tarnctl
