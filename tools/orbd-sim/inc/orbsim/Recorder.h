// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <tuple>
#include <vector>

#include "orbsim/Frame.h"

namespace orbsim {

// The requests of one session to a service so far.
struct ServiceState {
  bool enabled = false;
  uint64_t reports = 0;  // periodic reports or indications sent
};
struct LceState : ServiceState {
  bool criteriaSet = false;
  bool reporting = false;
  Blob criteria;  // the accepted criteria message, serialised
};
struct LleState : ServiceState {
  uint32_t criteria = 0;  // reports are sent while it is not 0
};
struct LliState : ServiceState {
  bool registered = false;
};

// Totals since construction or clear(). A restart of the daemon does not reset them.
struct Totals {
  size_t connections = 0;        // accepted
  size_t connectionsClosed = 0;  // descriptor closed on this side, handshake completed or not
  size_t sessions = 0;           // handshakes completed
  size_t sessionsClosed = 0;     // connections closed after a completed handshake
  size_t frames = 0;             // frames received
};

// Records what clients did, for tests to inspect and to wait for. Owned by Daemon, written by the
// accept and session threads, read by any thread. `mLock` guards everything. It is never held while
// other code runs, except for the short predicates of the waits.
class Recorder {
 public:
  using Timeout = std::chrono::milliseconds;

  explicit Recorder(bool keepContents) : mKeepContents(keepContents) {}

  void connectionOpened();
  void connectionClosed(uint32_t sessionId, bool wasSession);
  void sessionOpened();
  void handshakeReply(const Blob& bytes);
  // Its number, by which dealtWith() tells that all that it leads to at once has happened.
  uint64_t frame(const Frame& frame);
  void dealtWith(uint64_t frame);
  template <class State>
  void setState(uint32_t sessionId, const State& state) {
    std::lock_guard<std::mutex> lock(mLock);
    std::get<States<State>>(mStates)[sessionId] = state;
    mChanged.notify_all();
  }
  void clear();

  Totals totals() const;
  std::vector<Frame> frames() const;
  std::vector<Blob> handshakeReplies() const;
  template <class State>
  State state(uint32_t sessionId) const {
    std::lock_guard<std::mutex> lock(mLock);
    return stateLocked<State>(sessionId);
  }

  bool waitForTotals(const std::function<bool(const Totals&)>& condition, Timeout timeout) const;
  // Until it is recorded, or until it has been dealt with besides.
  enum class Until { kRecorded, kDealtWith };
  bool waitForFrame(const std::function<bool(const Frame&)>& wanted, Frame* found, Timeout timeout,
                    Until until = Until::kRecorded) const;
  template <class State>
  bool waitForState(uint32_t sessionId, const std::function<bool(const State&)>& condition,
                    Timeout timeout) const {
    return waitUntil(timeout, [&] { return condition(stateLocked<State>(sessionId)); });
  }

 private:
  template <class State>
  using States = std::map<uint32_t, State>;  // by session id; a reused id starts again

  template <class State>
  State stateLocked(uint32_t sessionId) const {
    const States<State>& states = std::get<States<State>>(mStates);
    const auto found = states.find(sessionId);
    return found == states.end() ? State{} : found->second;
  }
  template <class Condition>
  bool waitUntil(Timeout timeout, Condition condition) const {
    std::unique_lock<std::mutex> lock(mLock);
    return mChanged.wait_for(lock, timeout, condition);
  }

  // False: ended sessions are only counted, so that memory does not grow in a long run.
  const bool mKeepContents;
  mutable std::mutex mLock;
  mutable std::condition_variable mChanged;
  Totals mTotals;
  std::vector<Frame> mFrames;
  uint64_t mNextFrame = 0;       // frames are counted from the beginning, whatever is forgotten
  std::set<uint64_t> mUnderWay;  // those that are being dealt with
  std::vector<Blob> mReplies;
  std::tuple<States<LceState>, States<LleState>, States<LliState>> mStates;
};

}  // namespace orbsim
