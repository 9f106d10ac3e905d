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

Daemon::Daemon(Options options)
    : mControl(options), mPlace(options.socketPath, mControl.options().log) {
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
  const int fd = mPlace.open(mControl.options().backlog);
  if (fd < 0) {
    mError = mPlace.error();
    return false;
  }
  {
    std::lock_guard<std::mutex> lock(mLock);
    mListenFd = fd;
    mRunning = true;
    mStopping = false;
    mListenerKilled = false;
  }
  try {
    mAcceptThread = std::thread(&Daemon::acceptLoop, this);
  } catch (const std::system_error& error) {
    closeListener();
    mPlace.leave();
    std::lock_guard<std::mutex> lock(mLock);
    mRunning = false;
    mError = error.what();
    return false;
  }
  mControl.log("listening on %s", socketPath().c_str());
  mControl.world().listening();
  return true;
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
  mPlace.leave();
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
      closeRetiredLocked();
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
    mControl.recorder().connectionClosed(0, false);
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

void Daemon::closeRetiredLocked() {
  for (const int fd : mRetiredFds) ::close(fd);
  mRetiredFds.clear();
}

void Daemon::closeListenerLocked() {
  closeRetiredLocked();
  if (mListenFd < 0) return;
  ::close(mListenFd);
  mListenFd = -1;
  // A killed listener's path is gone already, and may be somebody else's by now.
  if (!mListenerKilled) mPlace.removeSocket();
}

}  // namespace orbsim
