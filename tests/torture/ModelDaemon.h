// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <random>
#include <string>
#include <vector>

#include "ModelAnswers.h"
#include "ModelBooks.h"
#include "orbsim/Daemon.h"

namespace torture {

// A daemon that answers, and in harmful rounds misbehaves in every way that it can think of. It
// notes what it got on each connection and compares it with the books at the end of a round. The
// owner's thread calls it; its sessions' threads answer. mMutex guards the notes and the choices.
class ModelDaemon {
 public:
  struct Manners {
    uint32_t flood = 0;    // so many messages at most where one would do
    bool harmful = false;  // breaks connections, or does not answer
    int silentFor = -1;    // the service that never gets through its handshake
  };

  ModelDaemon();

  // A new round; the daemon serves.
  bool begin(const Manners& manners, uint64_t seed);
  // Something harmful.
  void act();
  // All that were connected have disconnected: what they sent agrees with the books.
  void finish();
  // Accepted in this round.
  uint64_t connections() const { return mNumber; }

 private:
  using Random = std::minstd_rand;
  enum class Plan { Healthy, Silent, SlowToGreet, Refuse, Close, NoMoreReading, NoMoreWriting };
  struct Connection {
    uint64_t number = 0;
    Plan plan = Plan::Healthy;
    int fd = -1;              // only for the session's own thread
    uint32_t framesToGo = 0;  // until the plan shows
    bool touched = false;     // perhaps the disable message did not get through
    int service = -1;
    size_t frames = 0;
    size_t disableMessages = 0;
    size_t enables = 0;
    uint64_t latestStart = 0;  // of the requests that came
  };
  using Asked = modelanswers::Asked;

  static orbsim::Options options();
  Connection& accepted(int fd, uint32_t sessionId);
  bool silentFor(int endpoint) const;
  bool greet(int fd, uint32_t sessionId);
  bool handle(orbsim::Session& session, const orbsim::Frame& frame);
  void note(Connection& connection, const Asked& asked);
  void answer(orbsim::Session& session, const Asked& asked, uint64_t connection);
  void misbehave(orbsim::Session& session, Connection& connection);
  void touchAll();
  void restart();
  uint32_t random(uint32_t below);
  void check(const Connection& connection);

  orbsim::Daemon mDaemon{options()};
  mutable std::mutex mMutex;
  std::condition_variable mChanged;
  Manners mManners;
  Random mRandom;
  bool mBlind = false;  // what comes now may not be noted: not reading, or on its way out
  uint64_t mNumber = 0;
  std::map<uint64_t, Connection> mConnections;
  std::map<uint32_t, uint64_t> mBySession;  // the numbers of this life's
};

}  // namespace torture
