// A file descriptor that is closed when its owner goes.
#pragma once

#include "platform/no_cancellation.h"

#include <cerrno>
#include <cstddef>
#include <string_view>
#include <unistd.h>
#include <utility>

/// Owns an open file, or nothing.
class FileDescriptor {
 public:
  FileDescriptor() noexcept = default;
  /// \param number  what a system call answered: negative for nothing
  explicit FileDescriptor(int number) noexcept : number_(number) {}
  FileDescriptor(FileDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~FileDescriptor() { Close(); }

  bool IsOpen() const noexcept { return number_ >= 0; }
  int Number() const noexcept { return number_; }

  /// Writes all of it, also where the system takes a part at a time; answers 0 or an errno value.
  int WriteAll(std::string_view bytes) const noexcept {
    while (!bytes.empty()) {
      const ssize_t put = ::write(number_, bytes.data(), bytes.size());
      if (put < 0 && errno == EINTR) {
        continue;
      }
      if (put <= 0) {
        return put == 0 ? ENOSPC : errno;
      }
      bytes.remove_prefix(static_cast<std::size_t>(put));
    }
    return 0;
  }

  /// False, with errno, when closing what was open failed; there is nothing open afterwards all the
  /// same.
  bool Close() noexcept {
    if (!IsOpen()) {
      return true;
    }
    const NoCancellation uncancelled;
    return ::close(std::exchange(number_, -1)) == 0;
  }

 private:
  int number_ = -1;
};
