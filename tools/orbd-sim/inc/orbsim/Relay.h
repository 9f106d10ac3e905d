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

// How a relay is set up; fixed for its life. The sinks are called on the relay's thread.
struct RelayOptions {
  std::string socketPath = kSocketPath;  // where applications connect
  std::string daemonPath;                // where the daemon listens
  std::function<void(const std::string&)> log;
  TraceSink trace;
  RecordSink record;
};

// Stands between applications and a daemon: each connection that it accepts gets one to the daemon,
// and bytes go both ways as they come. It knows nothing of what they mean; trace and recording get
// copies. A side that says no more, or goes, is seen by the other as if they were connected; a side
// that does not read holds the other up, since at most one piece of each direction is kept.
//
// start() and stop() belong to the owner's thread; start() makes the one thread that does it all.
class Relay {
 public:
  explicit Relay(RelayOptions options);
  ~Relay();  // stops
  Relay(const Relay&) = delete;
  Relay& operator=(const Relay&) = delete;

  // Listens. False with error().
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

  // The thread's own.
  std::chrono::steady_clock::time_point mStart;
  std::vector<std::unique_ptr<RelayConnection>> mConnections;
  uint32_t mAccepted = 0;
  bool mNoDescriptors = false;  // the pending connection has to wait
};

}  // namespace orbsim
