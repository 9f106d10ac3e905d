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

// A daemon that answers, and in harmful rounds misbehaves in many ways. It records what it got on
// each connection and compares that with the books at the end of a round. The owner's thread calls
// it; the threads of its sessions answer. mMutex guards the records and the random choices.
class ModelDaemon {
 public:
  struct Manners {
    uint32_t flood = 0;    // sends up to so many messages in place of one
    bool harmful = false;  // breaks connections, or does not answer
    int silentFor = -1;    // the service whose handshake is never completed
  };

  ModelDaemon();

  // Starts a new round and the daemon.
  bool begin(const Manners& manners, uint64_t seed);
  // Misbehaves once, in a random way.
  void act();
  // All clients have disconnected: checks that what they sent agrees with the books.
  void finish();
  // Number of connections accepted in this round.
  uint64_t connections() const { return mNumber; }

 private:
  using Random = std::minstd_rand;
  enum class Plan { Healthy, Silent, SlowToGreet, Refuse, Close, NoMoreReading, NoMoreWriting };
  struct Connection {
    uint64_t number = 0;
    Plan plan = Plan::Healthy;
    int fd = -1;              // used by the session's own thread only
    uint32_t framesToGo = 0;  // until the plan takes effect
    bool touched = false;     // the disable message may be lost
    int service = -1;
    size_t frames = 0;
    size_t disableMessages = 0;
    size_t enables = 0;
    uint64_t latestStart = 0;  // of the requests that arrived
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
  bool mBlind = false;  // new requests may not be recorded: the daemon does not read, or ends
  uint64_t mNumber = 0;
  std::map<uint64_t, Connection> mConnections;
  std::map<uint32_t, uint64_t> mBySession;  // numbers of the connections since the daemon's start
};

}  // namespace torture
