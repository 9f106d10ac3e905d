// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <queue>
#include <string>
#include <thread>
#include <vector>

#include "orbsim/Daemon.h"
#include "orbsim/Recording.h"

namespace orbsim {

struct RecordedConnection;
struct RecordedStep;

// Makes a daemon send to its clients what the daemon of a recording sent. A connection plays the
// first recorded connection that is not used yet; if its endpoint is different, the first unused
// one of that endpoint. A request gets the answer to the first unused recorded request of the same
// service and event, with the transaction of the live request. Indications follow their recorded
// request after the recorded delay, and so does the end of the connection if the daemon ended it. A
// request that is not in the recording is logged and not answered.
//
// Created by the owner of a daemon before start(); lives longer than the daemon. Handshakes and
// requests come on the sessions' threads; a separate thread sends messages when they are due.
// `mLock` guards the rest; it is not held while the daemon is called.
class Replay {
 public:
  // Recorded times are divided by `speed`.
  Replay(Daemon& daemon, const std::vector<RecordedEvent>& events, double speed);
  ~Replay();
  Replay(const Replay&) = delete;
  Replay& operator=(const Replay&) = delete;

  size_t connections() const { return mConnections.size(); }

 private:
  using Clock = std::chrono::steady_clock;

  // A connection that is played.
  struct Player {
    RecordedConnection* recorded = nullptr;
    uint32_t session = 0;   // the session id that the client got
    uint64_t endpoint = 0;  // of the client
  };
  struct Due {
    Clock::time_point at;
    uint64_t order = 0;  // order of messages with the same time
    uint32_t session = 0;
    Blob bytes;
    bool end = false;  // end the connection; no bytes

    bool operator<(const Due& other) const {  // the largest is the next one
      return at != other.at ? at > other.at : order > other.order;
    }
  };

  RecordedConnection* take();
  RecordedConnection* takeOf(uint64_t endpoint, RecordedConnection* instead);
  bool shakeHands(Session& session);
  bool playAsItWas(Session& session, const RecordedConnection& recorded);
  Due dueAfter(const RecordedStep& step, const Player& player, uint64_t transaction) const;
  bool answer(Session& session, const Frame& frame);
  void schedule(uint32_t session, Due due);
  void run();

  Daemon& mDaemon;
  const double mSpeed;
  const std::vector<std::unique_ptr<RecordedConnection>> mConnections;

  std::mutex mLock;
  std::condition_variable mChanged;
  bool mStopping = false;
  std::map<uint32_t, Player> mPlayers;  // by the daemon's session id
  std::priority_queue<Due> mDue;
  uint64_t mOrder = 0;
  std::thread mThread;
};

}  // namespace orbsim
