// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <map>
#include <utility>

#include "Mutex.h"
#include "orbsim/Daemon.h"

namespace growth {

// A daemon that answers each service's request with prepared bytes, and criteria with their id or
// not at all. The main thread changes its settings between requests. mLock guards the prepared
// frames, which the sessions' threads share.
class Daemon {
 public:
  Daemon();
  bool start() { return mDaemon.start(); }
  // The number of characters of text in the reports that answer requests.
  void setPayload(size_t payload);
  // Whether criteria are answered.
  void setAnswering(bool on) { mAnswering = on; }

 private:
  using Place = std::pair<uint32_t, uint32_t>;  // session, service

  bool answer(orbsim::Session& session, const orbsim::Frame& frame);
  orbsim::Blob answerOf(const orbsim::Session& session, uint32_t service);

  std::atomic<bool> mAnswering{true};
  Mutex mLock;
  size_t mPayload ORB_GUARDED_BY(mLock) = 0;
  std::map<Place, orbsim::Blob> mReady ORB_GUARDED_BY(mLock);
  orbsim::Daemon mDaemon;  // its threads end first
};

}  // namespace growth
