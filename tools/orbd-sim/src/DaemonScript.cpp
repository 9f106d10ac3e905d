// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// The functions of Daemon for observation and actions. Start and stop are in Daemon.cpp.

#include <sys/socket.h>

#include <utility>

#include "orbsim/Daemon.h"

namespace orbsim {

size_t Daemon::sessionCount() const { return sessionIds().size(); }

std::vector<uint32_t> Daemon::sessionIds() const {
  std::vector<uint32_t> ids;
  for (const auto& session : sessions()) {
    if (session->established()) ids.push_back(session->id());
  }
  return ids;
}

bool Daemon::waitForConnections(size_t count, Timeout timeout) const {
  return mControl.recorder().waitForTotals(
      [count](const Totals& totals) { return totals.connections >= count; }, timeout);
}

bool Daemon::waitForConnectionsClosed(size_t count, Timeout timeout) {
  const bool closed = mControl.recorder().waitForTotals(
      [count](const Totals& totals) { return totals.connectionsClosed >= count; }, timeout);
  reapFinished();
  return closed;
}

bool Daemon::waitForSessions(size_t count, Timeout timeout) const {
  return mControl.recorder().waitForTotals(
      [count](const Totals& totals) { return totals.sessions >= count; }, timeout);
}

bool Daemon::waitForSessionsClosed(size_t count, Timeout timeout) {
  const bool closed = mControl.recorder().waitForTotals(
      [count](const Totals& totals) { return totals.sessionsClosed >= count; }, timeout);
  reapFinished();
  return closed;
}

bool Daemon::waitForFrames(size_t count, Timeout timeout) const {
  return mControl.recorder().waitForTotals(
      [count](const Totals& totals) { return totals.frames >= count; }, timeout);
}

bool Daemon::waitForFrame(const std::function<bool(const Frame&)>& wanted, Frame* found,
                          Timeout timeout) const {
  return mControl.recorder().waitForFrame(wanted, found, timeout);
}

bool Daemon::waitForFrameDealtWith(const std::function<bool(const Frame&)>& wanted, Frame* found,
                                   Timeout timeout) const {
  return mControl.recorder().waitForFrame(wanted, found, timeout, Recorder::Until::kDealtWith);
}

bool Daemon::sendFrame(uint32_t sessionId, const Header& header, const Blob& payload) {
  const auto session = find(sessionId, /*establishedOnly=*/true);
  return session && session->sendFrame(header, payload);
}

bool Daemon::sendBlob(uint32_t sessionId, uint32_t sdkType, const Blob& blob) {
  const auto session = find(sessionId, /*establishedOnly=*/true);
  return session && session->sendBlob(sdkType, blob);
}

bool Daemon::sendBytes(uint32_t sessionId, const Blob& bytes) {
  const auto session = find(sessionId, /*establishedOnly=*/true);
  return session && session->send(bytes);
}

Header Daemon::headerFor(uint32_t sessionId, uint64_t messageId, size_t payloadLength) const {
  const auto session = find(sessionId, /*establishedOnly=*/false);
  return session ? session->headerFor(messageId, payloadLength) : Header{};
}

size_t Daemon::queuedBytes(uint32_t sessionId) const {
  const auto session = find(sessionId, /*establishedOnly=*/true);
  return session ? session->queuedBytes() : 0;
}

bool Daemon::closeSession(uint32_t sessionId) {
  const auto session = find(sessionId, /*establishedOnly=*/false);
  if (!session) return false;
  session->close();
  return true;
}

void Daemon::closeAll() {
  for (const auto& session : sessions()) session->close();
}

void Daemon::killListener() {
  {
    const LockGuard place(mPlaceLock);
    silenceListener();
    clearPlace();
  }
  mWake.wake();
}

bool Daemon::refuseConnections() {
  std::vector<std::string> lines;
  bool there = true;
  {
    const LockGuard place(mPlaceLock);
    if (!serving()) return true;
    silenceListener();
    if (mPresence == Presence::kNothing) there = mPlace.leaveUnused();
    if (there) mPresence = Presence::kUnused;
    lines = mPlace.takeLines();
    if (!there) lines.push_back(mPlace.error());
  }
  mWake.wake();
  tell(lines);
  return there;
}

// From now on connections are refused. The accept thread closes the descriptor, because it may be
// polling it.
void Daemon::silenceListener() {
  const LockGuard lock(mLock);
  if (mListenFd < 0 || mListenerKilled) return;
  mListenerKilled = true;
  ::shutdown(mListenFd, SHUT_RDWR);
}

// True between start() and stop(); outside of that there is nothing to change.
bool Daemon::serving() const {
  const LockGuard lock(mLock);
  return mRunning && !mStopping;
}

void Daemon::vanish() {
  killListener();
  closeAll();
}

bool Daemon::reappear() {
  std::vector<std::string> lines;
  bool listening = false;
  {
    const LockGuard place(mPlaceLock);
    if (!serving() || mPresence == Presence::kListener) return true;
    const int fd = mPlace.open(mControl.options().backlog);
    listening = fd >= 0;
    lines = mPlace.takeLines();
    if (listening) {
      mPresence = Presence::kListener;
      takeListener(fd);
      lines.push_back("listening on " + socketPath());
    } else {
      lines.push_back(mPlace.error());
    }
  }
  mWake.wake();
  tell(lines);
  return listening;
}

void Daemon::takeListener(int fd) {
  const LockGuard lock(mLock);
  // The accept thread may still poll the old descriptor, so that thread closes it.
  if (mListenFd >= 0) mRetiredFds.push_back(mListenFd);
  mListenFd = fd;
  mListenerKilled = false;
  mNextId = 1;
}

std::vector<SessionView> Daemon::sessionViews() const {
  std::vector<SessionView> views;
  for (const auto& session : sessions()) {
    if (session->established()) views.push_back(session->view());
  }
  return views;
}

size_t Daemon::sendToUsers(uint32_t sdkType, const Blob& blob) {
  size_t sent = 0;
  for (const auto& session : sessions()) {
    if (!session->established() || !session->uses(sdkType)) continue;
    if (session->sendBlob(sdkType, blob)) ++sent;
  }
  return sent;
}

void Daemon::setAccepting(bool on) {
  {
    const LockGuard lock(mLock);
    mAccepting = on;
  }
  mWake.wake();
}

void Daemon::setReading(bool on) {
  mControl.setReading(on);
  for (const auto& session : sessions()) session->wake();
}

void Daemon::setNextSessionId(uint32_t id) {
  const LockGuard lock(mLock);
  mNextId = id;
}

void Daemon::setReportInterval(std::chrono::milliseconds interval) {
  mControl.setReportInterval(interval);
}

void Daemon::wakeSessions() const {
  for (const auto& session : sessions()) session->wake();
}

// The newest open session with that id.
std::shared_ptr<Session> Daemon::find(uint32_t sessionId, bool establishedOnly) const {
  const LockGuard lock(mLock);
  for (auto entry = mSessions.rbegin(); entry != mSessions.rend(); ++entry) {
    const Session& session = *entry->session;
    if (session.id() != sessionId || session.finished()) continue;
    if (establishedOnly && !session.established()) continue;
    return entry->session;
  }
  return nullptr;
}

// Copies, so that no lock is held while they are used.
std::vector<std::shared_ptr<Session>> Daemon::sessions() const {
  const LockGuard lock(mLock);
  std::vector<std::shared_ptr<Session>> all;
  all.reserve(mSessions.size());
  for (const Entry& entry : mSessions) all.push_back(entry.session);
  return all;
}

}  // namespace orbsim
