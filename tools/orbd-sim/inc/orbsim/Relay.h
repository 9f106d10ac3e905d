// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <poll.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "orbsim/Recording.h"
#include "orbsim/SocketPlace.h"
#include "orbsim/Trace.h"
#include "orbsim/WakeFd.h"

namespace orbsim {

class RelayConnection;

// The settings of a relay; fixed for its lifetime. The sinks are called on the relay's thread.
struct RelayOptions {
  std::string socketPath = kSocketPath;  // path for applications
  std::string daemonPath;                // path of the daemon
  std::function<void(const std::string&)> log;
  TraceSink trace;
  RecordSink record;
};

// Forwards data between applications and a daemon. For each accepted connection it opens a
// connection to the daemon and forwards bytes in both directions. It does not interpret them; trace
// and recording get copies. If one side shuts down or disconnects, the other side sees this. If one
// side does not read, the other side is blocked, because at most one piece per direction is kept.
//
// The owner's thread calls start() and stop(). start() creates the only thread.
class Relay {
 public:
  explicit Relay(RelayOptions options);
  ~Relay();  // stops
  Relay(const Relay&) = delete;
  Relay& operator=(const Relay&) = delete;

  // Starts to listen. False with error().
  bool start();
  // Ends all connections and waits for the thread.
  void stop();
  const std::string& error() const { return mError; }

 private:
  void run();
  std::vector<pollfd> pollSet() const;
  void acceptOne();
  void log(const std::string& line) const;
  void logPlace();

  const RelayOptions mOptions;
  SocketPlace mPlace;
  std::string mError;
  std::thread mThread;
  WakeFd mWake;
  std::atomic<bool> mStopping{false};
  int mListenFd = -1;

  // Only for the relay's thread.
  std::chrono::steady_clock::time_point mStart;
  std::vector<std::unique_ptr<RelayConnection>> mConnections;
  uint32_t mAccepted = 0;
  bool mNoDescriptors = false;  // the pending connection must wait for a descriptor
};

}  // namespace orbsim
