// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <sys/socket.h>
#include <sys/un.h>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <string>

namespace orbtool {

// The address of a UNIX socket with a path, for connect() and bind(). Both fail with errno if the
// path is too long. A value without a thread.
class SocketAddress {
 public:
  // The maximum length of a path in bytes.
  static constexpr size_t kMaxPath = sizeof(sockaddr_un::sun_path) - 1;

  explicit SocketAddress(const std::string& path) : mTooLong(path.size() > kMaxPath) {
    mAddress.sun_family = AF_UNIX;
    if (!mTooLong) std::memcpy(mAddress.sun_path, path.data(), path.size());
  }

  int connect(int fd) const {
    return fits() ? ::connect(fd, reinterpret_cast<const sockaddr*>(&mAddress), sizeof mAddress)
                  : -1;
  }
  int bind(int fd) const {
    return fits() ? ::bind(fd, reinterpret_cast<const sockaddr*>(&mAddress), sizeof mAddress) : -1;
  }

 private:
  bool fits() const {
    if (mTooLong) errno = ENAMETOOLONG;
    return !mTooLong;
  }

  sockaddr_un mAddress = {};
  bool mTooLong;
};

}  // namespace orbtool
