// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "orbsim/Replay.h"

#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <utility>

#include "RecordedConnection.h"
#include "orbsim/Handshake.h"

namespace orbsim {
namespace {

// Sends nothing until the client disconnects.
void waitForHangUp(int fd) {
  pollfd hangUp = {fd, POLLRDHUP, 0};
  while (::poll(&hangUp, 1, -1) < 0 && errno == EINTR) {
  }
}

}  // namespace

Replay::Replay(Daemon& daemon, const std::vector<RecordedEvent>& events, double speed)
    : mDaemon(daemon), mSpeed(speed), mConnections(connectionsOf(events)) {
  mThread = std::thread(&Replay::run, this);
  mDaemon.setSessionHandshake([this](Session& session) { return shakeHands(session); });
  mDaemon.setFrameHandler(
      [this](Session& session, const Frame& frame) { return answer(session, frame); });
}

Replay::~Replay() {
  {
    const std::lock_guard<std::mutex> lock(mLock);
    mStopping = true;
  }
  mChanged.notify_all();
  mThread.join();
}

RecordedConnection* Replay::take() {
  const std::lock_guard<std::mutex> lock(mLock);
  for (const auto& each : mConnections) {
    if (each->played) continue;
    each->played = true;
    return each.get();
  }
  return nullptr;
}

// The connection that was selected before the client's endpoint was known, or another one for that
// endpoint.
RecordedConnection* Replay::takeOf(uint64_t endpoint, RecordedConnection* instead) {
  if (instead->endpoint == endpoint) return instead;
  const std::lock_guard<std::mutex> lock(mLock);
  instead->played = false;
  for (const auto& each : mConnections) {
    if (each->played || !each->established || each->endpoint != endpoint) continue;
    each->played = true;
    return each.get();
  }
  return nullptr;
}

bool Replay::shakeHands(Session& session) {
  RecordedConnection* recorded = take();
  if (recorded == nullptr) {
    session.log("no recorded connection is left");
    return false;
  }
  if (!recorded->established) return playAsItWas(session, *recorded);
  Player player;
  player.session = recorded->session;
  HandshakeReply reply;
  if (!performHandshake(session.socket(), player.session, reply, session.tap())) {
    session.log("handshake failed after %zu bytes", reply.bytes.size());
    return false;
  }
  player.endpoint = static_cast<uint64_t>(static_cast<int64_t>(reply.endpoint));
  player.recorded = takeOf(player.endpoint, recorded);
  if (player.recorded == nullptr) {
    session.log("no recorded connection of endpoint %d is left", reply.endpoint);
    return false;
  }
  {
    const std::lock_guard<std::mutex> lock(mLock);
    mPlayers[session.id()] = player;
  }
  // The end can come without a request; frames wait for the first request.
  for (const RecordedStep& step : player.recorded->requests.front().steps) {
    if (step.end) schedule(session.id(), dueAfter(step, player, 0));
  }
  return true;
}

// Repeats an incomplete handshake.
bool Replay::playAsItWas(Session& session, const RecordedConnection& recorded) {
  const Blob& records = recorded.records;
  session.log("the recorded handshake was not completed");
  if (!records.empty()) {
    if (session.tap()) session.tap()(Direction::kToClient, records.data(), records.size());
    (void)::send(session.socket(), records.data(), records.size(), MSG_NOSIGNAL);
  }
  if (!recorded.endedByDaemon) waitForHangUp(session.socket());
  return false;
}

Replay::Due Replay::dueAfter(const RecordedStep& step, const Player& player,
                             uint64_t transaction) const {
  Due due;
  due.at = Clock::now() + std::chrono::duration_cast<Clock::duration>(step.after / mSpeed);
  due.bytes = step.bytes;
  due.end = step.end;
  if (step.frame) {
    Frame frame = step.takesTransaction ? withTransaction(*step.frame, transaction) : *step.frame;
    // Sends the same bytes as to the recorded client.
    if (frame.header.sessionId == player.recorded->session) frame.header.sessionId = player.session;
    if (frame.header.destination == player.recorded->endpoint)
      frame.header.destination = player.endpoint;
    due.bytes = frame.bytes();
  }
  return due;
}

bool Replay::answer(Session& session, const Frame& frame) {
  const MessageKey key = keyOf(frame, Direction::kToDaemon);
  std::vector<Due> dues;
  bool known = false;
  {
    const std::lock_guard<std::mutex> lock(mLock);
    const auto found = mPlayers.find(session.id());
    if (found == mPlayers.end()) return true;
    const Player& player = found->second;
    std::vector<RecordedRequest>& requests = player.recorded->requests;
    if (!std::exchange(requests.front().played, true)) {
      for (const RecordedStep& step : requests.front().steps) {
        if (!step.end) dues.push_back(dueAfter(step, player, 0));
      }
    }
    for (size_t i = 1; i < requests.size() && !known; ++i) {
      known = !requests[i].played && requests[i].key.sameRequest(key);
      if (!known) continue;
      requests[i].played = true;
      for (const RecordedStep& step : requests[i].steps)
        dues.push_back(dueAfter(step, player, key.transaction));
    }
  }
  session.log("%s: %s", nameOf(frame).c_str(),
              known ? ("recorded, " + std::to_string(dues.size()) + " to follow").c_str()
                    : "no recorded request is left");
  for (Due& due : dues) schedule(session.id(), std::move(due));
  return true;
}

void Replay::schedule(uint32_t session, Due due) {
  {
    const std::lock_guard<std::mutex> lock(mLock);
    due.session = session;
    due.order = mOrder++;
    mDue.push(std::move(due));
  }
  mChanged.notify_all();
}

// Sends due messages one after the other.
void Replay::run() {
  std::unique_lock<std::mutex> lock(mLock);
  while (!mStopping) {
    if (mDue.empty()) {
      mChanged.wait(lock);
      continue;
    }
    const Clock::time_point next = mDue.top().at;
    if (next > Clock::now()) {
      mChanged.wait_until(lock, next);
      continue;
    }
    const Due due = mDue.top();
    mDue.pop();
    lock.unlock();
    if (!due.bytes.empty()) mDaemon.sendBytes(due.session, due.bytes);
    if (due.end) mDaemon.closeSession(due.session);
    lock.lock();
  }
}

}  // namespace orbsim
