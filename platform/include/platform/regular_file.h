// Reading a whole file that somebody else may have put there.
#pragma once

#include "platform/file_descriptor.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>

/// Reads a regular file of at most so many bytes. Never waits: of any other kind, nothing is read.
/// \return false, with errno, when that cannot be done: EISDIR for a directory, ENOTSUP for any other
///         kind of file, EFBIG for one that is too long, what open(2) or read(2) say otherwise
inline bool ReadRegularFile(const std::string& path, std::size_t most, std::string& text) {
  // Opening a pipe would wait for its writer.
  const FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  struct stat status = {};
  if (!file.IsOpen() || fstat(file.Number(), &status) != 0) {
    return false;
  }
  if (!S_ISREG(status.st_mode)) {
    errno = S_ISDIR(status.st_mode) ? EISDIR : ENOTSUP;
    return false;
  }
  text.clear();
  std::array<char, 4096> block;
  for (;;) {
    const ssize_t got = read(file.Number(), block.data(), block.size());
    if (got == 0) {
      return true;
    }
    if (got > 0) {
      text.append(block.data(), static_cast<std::size_t>(got));
    } else if (errno != EINTR) {
      return false;
    }
    if (text.size() > most) {
      errno = EFBIG;
      return false;
    }
  }
}
