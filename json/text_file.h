// The text of a file that somebody else may have put there.
#pragma once

#include <cstddef>
#include <string>

namespace Json {

/// What came of reading a file.
struct TextFile {
  std::string text;  ///< empty where it was not read
  /// 0, or why it was not read: EISDIR for a directory, ENOTSUP for what is no regular file either,
  /// EFBIG for one of more bytes than were asked for, or what open(2), fstat(2) or read(2) say
  int error = 0;
  std::size_t most = 0;  ///< as many bytes were asked for

  explicit operator bool() const noexcept { return error == 0; }
  /// The error in words: "is a directory", "is no regular file", "is larger than 63 bytes", or those
  /// of the system.
  std::string Reason() const;
};

/// Reads a regular file, through symbolic links, of at most so many bytes, however it grows
/// meanwhile. Never waits for anybody: not for a pipe's writer, a device, or the holder of a lease.
/// Not a point at which the thread is cancelled. Throws nothing but std::bad_alloc.
TextFile ReadTextFile(const char* path, std::size_t most);
inline TextFile ReadTextFile(const std::string& path, std::size_t most) {
  return ReadTextFile(path.c_str(), most);
}

}  // namespace Json
