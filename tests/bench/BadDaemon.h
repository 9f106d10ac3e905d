// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <sys/types.h>

#include <array>

// A state of the daemon in which it does not serve applications.
struct BadState {
  const char* name;
  int connections;                             // connections in the state before a measurement
  bool (*script)(int fd, unsigned sessionId);  // then the connection is closed; may be null
};

extern const std::array<BadState, 7> kBadStates;

// The daemon in a bad state, in a separate process, so that its processor time is not counted. It
// must be created before the process has threads, and belongs to the main thread. The destructor
// ends it and removes its socket; if the process dies before, the kernel ends it.
class BadDaemon {
 public:
  explicit BadDaemon(const BadState& state);
  ~BadDaemon();
  BadDaemon(const BadDaemon&) = delete;
  BadDaemon& operator=(const BadDaemon&) = delete;

  // Waits until the daemon listens, if that is part of the state. False if it cannot listen.
  bool ready() const { return mReady; }
  // Waits until as many connections as the state needs are in it. False if they do not come.
  bool waitForConnections() const;

 private:
  const BadState& mState;
  pid_t mProcess = -1;
  int mEvents = -1;  // the daemon writes one byte when it is ready and one for each connection
  bool mReady = false;
};
