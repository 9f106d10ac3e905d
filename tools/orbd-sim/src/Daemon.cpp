// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "orbsim/Daemon.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <system_error>
#include <utility>

#include "orbsim/World.h"

namespace orbsim {

Daemon::Daemon(Options options) : mControl(options), mPlace(options.socketPath) {
  mControl.world().setChanged([this] { wakeSessions(); });
}

Daemon::~Daemon() { stop(); }

bool Daemon::start() {
  if (running()) return true;
  mError.clear();
  if (mWake.fd() < 0) {
    mError = std::string("eventfd: ") + std::strerror(errno);
    return false;
  }
  if (!openPlace()) return false;
  try {
    mAcceptThread = std::thread(&Daemon::acceptLoop, this);
  } catch (const std::system_error& error) {
    closePlace();
    leaveDirectory();
    const LockGuard lock(mLock);
    mRunning = false;
    mError = error.what();
    return false;
  }
  mControl.log("listening on %s", socketPath().c_str());
  mControl.world().listening();
  return true;
}

// False with the error if the daemon cannot listen.
bool Daemon::openPlace() {
  std::vector<std::string> lines;
  bool listening = false;
  {
    const LockGuard place(mPlaceLock);
    const int fd = mPlace.open(mControl.options().backlog);
    listening = fd >= 0;
    lines = mPlace.takeLines();
    if (listening) {
      mPresence = Presence::kListener;
      const LockGuard lock(mLock);
      mListenFd = fd;
      mRunning = true;
      mStopping = false;
      mListenerKilled = false;
    } else {
      mError = mPlace.error();
    }
  }
  tell(lines);
  return listening;
}

// Ends listening. Called after the end of the accept thread.
void Daemon::closePlace() {
  const LockGuard place(mPlaceLock);
  clearPlace();
  const LockGuard lock(mLock);
  closeListener();
}

void Daemon::leaveDirectory() {
  std::vector<std::string> lines;
  {
    const LockGuard place(mPlaceLock);
    mPlace.leave();
    lines = mPlace.takeLines();
  }
  tell(lines);
}

void Daemon::clearPlace() {
  const Presence was = std::exchange(mPresence, Presence::kNothing);
  if (was == Presence::kListener) mPlace.removeSocket();
  if (was == Presence::kUnused) mPlace.removeUnused();
}

void Daemon::tell(const std::vector<std::string>& lines) {
  for (const std::string& line : lines) mControl.log("%s", line.c_str());
}

void Daemon::stop() {
  {
    const LockGuard lock(mLock);
    if (!mRunning) return;
    mStopping = true;
  }
  mWake.wake();
  mAcceptThread.join();
  closePlace();
  // The accept thread has ended, so no session is added any more.
  closeAll();
  std::vector<Entry> ended;
  {
    const LockGuard lock(mLock);
    ended.swap(mSessions);
  }
  for (Entry& entry : ended) entry.thread.join();
  leaveDirectory();
  {
    const LockGuard lock(mLock);
    mRunning = false;
    mNextId = 1;
  }
  mControl.log("stopped");
}

bool Daemon::running() const {
  const LockGuard lock(mLock);
  return mRunning;
}

void Daemon::acceptLoop() {
  for (;;) {
    pollfd fds[2] = {};
    {
      const LockGuard lock(mLock);
      if (mStopping) return;
      closeRetired();
      if (mListenerKilled) closeListener();
      fds[1].fd = mAccepting ? mListenFd : -1;
    }
    fds[0].fd = mWake.fd();
    fds[0].events = fds[1].events = POLLIN;
    if (::poll(fds, 2, -1) < 0) continue;
    if ((fds[0].revents & POLLIN) != 0) {
      mWake.drain();
      continue;  // a setting changed: check it before accepting
    }
    reapFinished();
    if (fds[1].revents != 0) acceptOne();
  }
}

void Daemon::acceptOne() {
  // Under the lock, so that no connection is accepted after setAccepting(false) has returned. The
  // listener does not block.
  UniqueLock lock(mLock);
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
    mControl.recorder().connectionClosed(0, false);
    return;
  }
  mSessions.push_back(std::move(entry));
}

// Without descriptors the connection stays pending: wait a short time, because polling would return
// at once.
void Daemon::pauseAccepting() {
  pollfd wake = {};
  wake.fd = mWake.fd();
  wake.events = POLLIN;
  ::poll(&wake, 1, 20);
}

// Joins the threads of ended sessions, which only have to return.
void Daemon::reapFinished() {
  std::vector<Entry> ended;
  {
    const LockGuard lock(mLock);
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

void Daemon::closeRetired() {
  for (const int fd : mRetiredFds) ::close(fd);
  mRetiredFds.clear();
}

void Daemon::closeListener() {
  closeRetired();
  if (mListenFd >= 0) ::close(mListenFd);
  mListenFd = -1;
}

}  // namespace orbsim
