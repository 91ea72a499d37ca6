#pragma once

#include <unistd.h>

#include <utility>

namespace toplist {

/// Owns one file descriptor and closes it at the end of its life; -1 means none.
class UniqueFd {
 public:
  explicit UniqueFd(int fd = -1) noexcept : fd_(fd) {}
  UniqueFd(UniqueFd&& other) noexcept : fd_(other.release()) {}
  UniqueFd& operator=(UniqueFd&& other) noexcept {
    reset(other.release());
    return *this;
  }
  UniqueFd(const UniqueFd&) = delete;
  UniqueFd& operator=(const UniqueFd&) = delete;
  ~UniqueFd() { reset(-1); }

  [[nodiscard]] int get() const noexcept { return fd_; }
  explicit operator bool() const noexcept { return fd_ >= 0; }

  /// Hands the descriptor to the caller, who closes it.
  int release() noexcept { return std::exchange(fd_, -1); }

 private:
  void reset(int fd) noexcept {
    if (fd_ >= 0) ::close(fd_);
    fd_ = fd;
  }

  int fd_;
};

}  // namespace toplist
