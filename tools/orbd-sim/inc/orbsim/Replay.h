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

// Makes a daemon say to its clients what a recording says that one said. A connection plays the
// first recorded one that is left; where its endpoint is another, the first of that endpoint. A
// request is answered as the first recorded one of the same service and event that is left, with
// the transaction of the live one; indications, and the end if the daemon was the one to end it,
// follow the request before them at their recorded distance. What has no counterpart is told in the
// log and not answered.
//
// Made by the owner of a daemon before start(), and outlives it. The handshake and the requests are
// seen on the sessions' threads; a thread of its own sends what is due. `mLock` guards the rest, no
// call of the daemon is made with it held.
class Replay {
 public:
  // `speed` divides the recorded times.
  Replay(Daemon& daemon, const std::vector<RecordedEvent>& events, double speed);
  ~Replay();
  Replay(const Replay&) = delete;
  Replay& operator=(const Replay&) = delete;

  size_t connections() const { return mConnections.size(); }

 private:
  using Clock = std::chrono::steady_clock;

  // A connection that is being played.
  struct Player {
    RecordedConnection* recorded = nullptr;
    uint32_t session = 0;   // that the client was told
    uint64_t endpoint = 0;  // the client's
  };
  struct Due {
    Clock::time_point at;
    uint64_t order = 0;  // of those of one time
    uint32_t session = 0;
    Blob bytes;
    bool end = false;  // of the connection, instead of bytes

    bool operator<(const Due& other) const {  // the largest is the next
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
  std::map<uint32_t, Player> mPlayers;  // by the daemon's number of the session
  std::priority_queue<Due> mDue;
  uint64_t mOrder = 0;
  std::thread mThread;
};

}  // namespace orbsim
