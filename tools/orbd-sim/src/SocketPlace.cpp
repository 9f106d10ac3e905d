// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "orbsim/SocketPlace.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "orbtool/SocketAddress.h"

namespace orbsim {
namespace {

using orbtool::SocketAddress;

constexpr size_t kMaxPath = SocketAddress::kMaxPath;

// The result of connecting to the socket: 0 if the connection is accepted or queued, because then a
// process listens; otherwise errno.
int connectError(const SocketAddress& address) {
  const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (fd < 0) return errno;
  const int result = address.connect(fd);
  const int error = result == 0 || errno == EAGAIN ? 0 : errno;
  ::close(fd);
  return error;
}

}  // namespace

std::string SocketPlace::whyWrong(const std::string& path) {
  if (path.empty()) return "a socket needs a path";
  if (path.size() > kMaxPath)
    return "a socket's path has at most " + std::to_string(kMaxPath) + " bytes: " + path;
  const size_t slash = path.rfind('/');
  if (path == kSocketPath || slash == std::string::npos) return {};
  struct stat status = {};
  if (::stat(path.substr(0, slash + 1).c_str(), &status) == 0 && S_ISDIR(status.st_mode)) return {};
  return "its directory does not exist: " + path;
}

int SocketPlace::open(int backlog) {
  mError.clear();
  if (mPath.empty() || mPath.size() > kMaxPath) {
    mError = whyWrong(mPath);
    return -1;
  }
  const int fd = makeDirectory() && clear() ? listen(backlog) : -1;
  if (fd < 0) leave();
  return fd;
}

// Another missing directory is a mistake in the path. If it were created, it would stay there.
bool SocketPlace::makeDirectory() {
  if (mPath != kSocketPath) return true;
  if (::mkdir(kSocketDirectory, 0755) != 0) {
    if (errno == EEXIST) return true;
    mError = std::string("cannot make ") + kSocketDirectory + ": " + std::strerror(errno);
    return false;
  }
  mMadeDirectory = true;
  mLines.push_back(std::string("made ") + kSocketDirectory);
  // Independent of the umask, applications of every user must be able to connect.
  return ::chmod(kSocketDirectory, 0755) == 0 || fail(std::strerror(errno));
}

// Removes the socket of a server that ended without removing it.
bool SocketPlace::clear() {
  struct stat status = {};
  if (::lstat(mPath.c_str(), &status) != 0) return true;  // bind() reports the error
  if (!S_ISSOCK(status.st_mode)) return fail("it exists and is no socket");
  const int error = connectError(SocketAddress(mPath));
  if (error == 0) return fail("somebody listens there already");
  // Only a refusal shows that no process listens.
  if (error != ECONNREFUSED)
    return fail(std::string("cannot test whether the existing socket is in use: ") +
                std::strerror(error));
  if (::unlink(mPath.c_str()) == 0 || errno == ENOENT) return true;
  return fail(std::string("cannot remove the socket that nobody uses: ") + std::strerror(errno));
}

int SocketPlace::listen(int backlog) {
  const int fd = bind();
  if (fd < 0 || ::listen(fd, backlog) == 0) return fd;
  fail(std::strerror(errno));
  removeSocket();
  ::close(fd);
  return -1;
}

int SocketPlace::bind() {
  const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (fd < 0) {
    fail(std::strerror(errno));
    return -1;
  }
  // The path must never have another mode.
  ::fchmod(fd, mMode);
  const bool bound = SocketAddress(mPath).bind(fd) == 0;
  // Independent of the umask.
  if (bound && ::chmod(mPath.c_str(), mMode) == 0) return fd;
  fail(std::strerror(errno));
  if (bound) removeSocket();
  ::close(fd);
  return -1;
}

bool SocketPlace::leaveUnused() {
  mError.clear();
  const int fd = makeDirectory() && clear() ? bind() : -1;
  if (fd < 0) return false;
  ::close(fd);
  return true;
}

bool SocketPlace::fail(const std::string& reason) {
  mError = "cannot listen on " + mPath + ": " + reason;
  return false;
}

void SocketPlace::removeSocket() { ::unlink(mPath.c_str()); }

void SocketPlace::removeUnused() {
  if (!clear()) mLines.push_back("left " + mPath + ": it is somebody else's now");
}

void SocketPlace::leave() {
  if (!mMadeDirectory) return;
  mMadeDirectory = false;
  const bool removed = ::rmdir(kSocketDirectory) == 0;
  mLines.push_back(removed ? std::string("removed ") + kSocketDirectory
                           : std::string("left ") + kSocketDirectory + ": " + std::strerror(errno));
}

}  // namespace orbsim
