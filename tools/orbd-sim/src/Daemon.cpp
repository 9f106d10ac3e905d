// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "orbsim/Daemon.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <system_error>
#include <utility>

namespace orbsim {
namespace {

// True when a connection to the address is taken or at least queued: somebody is at home.
bool someoneListens(const sockaddr_un& address) {
  const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (fd < 0) return false;
  const int result = ::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address));
  const bool listens = result == 0 || errno == EAGAIN;
  ::close(fd);
  return listens;
}

}  // namespace

Daemon::Daemon(Options options) : mControl(options) {}

Daemon::~Daemon() { stop(); }

bool Daemon::start() {
  if (running()) return true;
  mError.clear();
  if (mWake.fd() < 0) return fail("eventfd", socketPath());
  if (!makeDirectory()) return false;
  if (!openListener()) {
    removeDirectory();
    return false;
  }
  {
    std::lock_guard<std::mutex> lock(mLock);
    mRunning = true;
    mStopping = false;
    mListenerKilled = false;
  }
  try {
    mAcceptThread = std::thread(&Daemon::acceptLoop, this);
  } catch (const std::system_error& error) {
    closeListener();
    removeDirectory();
    std::lock_guard<std::mutex> lock(mLock);
    mRunning = false;
    mError = error.what();
    return false;
  }
  mControl.log("listening on %s", socketPath().c_str());
  return true;
}

// A missing directory elsewhere is a mistake in the path: made on the way, it would stay and be in
// somebody's way.
bool Daemon::makeDirectory() {
  if (socketPath() != kSocketPath) return true;
  if (::mkdir(kSocketDirectory, 0755) != 0) {
    return errno == EEXIST || fail("mkdir", kSocketDirectory);
  }
  mMadeDirectory = true;
  mControl.log("made %s", kSocketDirectory);
  // Whatever the umask says, applications of every user connect.
  if (::chmod(kSocketDirectory, 0755) == 0) return true;
  fail("chmod", kSocketDirectory);
  removeDirectory();
  return false;
}

void Daemon::removeDirectory() {
  if (!mMadeDirectory) return;
  mMadeDirectory = false;
  if (::rmdir(kSocketDirectory) == 0) {
    mControl.log("removed %s", kSocketDirectory);
  } else {
    mControl.log("left %s: %s", kSocketDirectory, std::strerror(errno));
  }
}

bool Daemon::openListener() {
  const std::string& path = socketPath();
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  if (path.empty() || path.size() >= sizeof(address.sun_path)) {
    errno = ENAMETOOLONG;
    return fail("socket path", path);
  }
  std::memcpy(address.sun_path, path.c_str(), path.size() + 1);

  struct stat status = {};
  if (::lstat(path.c_str(), &status) == 0 && S_ISSOCK(status.st_mode)) {
    if (someoneListens(address)) {
      errno = EADDRINUSE;
      return fail("bind", path);
    }
    ::unlink(path.c_str());
  }

  const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (fd < 0) return fail("socket", path);
  const char* failed = nullptr;
  if (::bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
    failed = "bind";
  } else if (::chmod(path.c_str(), 0666) != 0) {  // applications of every user connect
    failed = "chmod";
  } else if (::listen(fd, mControl.options().backlog) != 0) {
    failed = "listen";
  }
  if (failed != nullptr) {
    fail(failed, path);
    ::close(fd);
    return false;
  }
  std::lock_guard<std::mutex> lock(mLock);
  mListenFd = fd;
  return true;
}

bool Daemon::fail(const char* what, const std::string& path) {
  mError = std::string(what) + " " + path + ": " + std::strerror(errno);
  return false;
}

void Daemon::stop() {
  {
    std::lock_guard<std::mutex> lock(mLock);
    if (!mRunning) return;
    mStopping = true;
  }
  mWake.wake();
  mAcceptThread.join();
  closeListener();
  // The accept thread is gone, so no session is added any more.
  closeAll();
  std::vector<Entry> ended;
  {
    std::lock_guard<std::mutex> lock(mLock);
    ended.swap(mSessions);
  }
  for (Entry& entry : ended) entry.thread.join();
  removeDirectory();
  std::lock_guard<std::mutex> lock(mLock);
  mRunning = false;
  mNextId = 1;
  mControl.log("stopped");
}

bool Daemon::running() const {
  std::lock_guard<std::mutex> lock(mLock);
  return mRunning;
}

void Daemon::acceptLoop() {
  for (;;) {
    pollfd fds[2] = {};
    {
      std::lock_guard<std::mutex> lock(mLock);
      if (mStopping) return;
      if (mListenerKilled) closeListenerLocked();
      fds[1].fd = mAccepting ? mListenFd : -1;
    }
    fds[0].fd = mWake.fd();
    fds[0].events = fds[1].events = POLLIN;
    if (::poll(fds, 2, -1) < 0) continue;
    if ((fds[0].revents & POLLIN) != 0) {
      mWake.drain();
      continue;  // something changed: look at it before accepting
    }
    reapFinished();
    if (fds[1].revents != 0) acceptOne();
  }
}

void Daemon::acceptOne() {
  // Under the lock, so that nothing is accepted once setAccepting(false) has returned; the
  // listener does not block.
  std::unique_lock<std::mutex> lock(mLock);
  if (!mAccepting || mListenerKilled || mStopping) return;
  const int fd = ::accept4(mListenFd, nullptr, nullptr, SOCK_CLOEXEC);
  if (fd < 0) {
    const bool exhausted = errno == EMFILE || errno == ENFILE || errno == ENOMEM;
    lock.unlock();
    if (exhausted) pauseAccepting();
    return;
  }
  Entry entry;
  entry.session = std::make_shared<Session>(fd, mNextId++, mControl);
  mControl.recorder().connectionOpened();
  try {
    entry.thread = std::thread(&Session::run, entry.session);
  } catch (const std::system_error& error) {
    lock.unlock();
    mControl.log("connection refused: %s", error.what());
    entry.session.reset();
    mControl.recorder().connectionClosed(false);
    return;
  }
  mSessions.push_back(std::move(entry));
}

// Without descriptors the pending connection stays pending: look again a little later instead of
// asking for it all the time.
void Daemon::pauseAccepting() {
  pollfd wake = {};
  wake.fd = mWake.fd();
  wake.events = POLLIN;
  ::poll(&wake, 1, 20);
}

// Joins the threads of sessions that have ended; they have nothing left to do but return.
void Daemon::reapFinished() {
  std::vector<Entry> ended;
  {
    std::lock_guard<std::mutex> lock(mLock);
    for (size_t i = 0; i < mSessions.size();) {
      if (!mSessions[i].session->finished()) {
        ++i;
        continue;
      }
      ended.push_back(std::move(mSessions[i]));
      mSessions.erase(mSessions.begin() + static_cast<std::ptrdiff_t>(i));
    }
  }
  for (Entry& entry : ended) entry.thread.join();
}

void Daemon::closeListener() {
  std::lock_guard<std::mutex> lock(mLock);
  closeListenerLocked();
}

void Daemon::closeListenerLocked() {
  if (mListenFd < 0) return;
  ::close(mListenFd);
  mListenFd = -1;
  // A killed listener's path is gone already, and may be somebody else's by now.
  if (!mListenerKilled) ::unlink(socketPath().c_str());
}

}  // namespace orbsim
