// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <sys/types.h>

#include <array>

// A state of the daemon in which no application gets what it wants.
struct BadState {
  const char* name;
  int connections;                             // that get there before anything is measured
  bool (*script)(int fd, unsigned sessionId);  // after which a connection is closed; may be empty
};

extern const std::array<BadState, 7> kBadStates;

// The daemon in a bad state, as a process of its own, so that what it costs is not counted. It has
// to be made before the process has threads, and belongs to the main thread. Ended, with its
// socket, by the destructor; by the kernel, if the process dies before.
class BadDaemon {
 public:
  explicit BadDaemon(const BadState& state);
  ~BadDaemon();
  BadDaemon(const BadDaemon&) = delete;
  BadDaemon& operator=(const BadDaemon&) = delete;

  // Once the daemon listens, if that is part of the state. False when that cannot be.
  bool ready() const { return mReady; }
  // Until the connections that the state wants are in it. False when they do not come.
  bool waitForConnections() const;

 private:
  const BadState& mState;
  pid_t mProcess = -1;
  int mEvents = -1;  // the daemon writes one byte when it is ready and one for each connection
  bool mReady = false;
};
