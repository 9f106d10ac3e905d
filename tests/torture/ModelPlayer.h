// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <random>
#include <thread>
#include <vector>

#include "ModelCalls.h"
#include "ModelDaemon.h"

namespace torture {

// What is likely in a round. In the first group each number is a share of the calls. In the second,
// one in so many; 0 for none.
struct Theme {
  const char* name;
  unsigned threads;
  unsigned scenes;  // all threads begin a scene at the same moment
  unsigned steps;   // the most in a scene

  uint32_t enables;
  uint32_t disables;
  uint32_t requests;
  uint32_t invalids;
  uint32_t waits;

  uint32_t callsInside;  // callbacks that make a call
  uint32_t lingers;      // callbacks that are made to last longer
  uint32_t lingering;    // how long at most, in milliseconds
  uint32_t stops;        // calls that stop at an allocation, so that other threads run there

  bool oneService;
  bool together;  // in turn, all threads enable their services in one scene, disable in the next
  uint32_t flood;
  bool harmful;
};
const std::vector<Theme>& themes();

// The application of one round: threads that make random calls, and callbacks that do so, too. The
// thread of the round creates it, calls play() and destroys it. One at a time.
class ModelPlayer {
 public:
  ModelPlayer(const Theme& theme, uint64_t seed);
  ~ModelPlayer();
  ModelPlayer(const ModelPlayer&) = delete;
  ModelPlayer& operator=(const ModelPlayer&) = delete;

  // Runs all scenes while the daemon makes random choices; then disables everything.
  void play(ModelDaemon& daemon);

 private:
  using Random = std::minstd_rand;
  static void inside(Kind kind, int account);

  void run(unsigned thread, uint64_t seed);
  void scene(unsigned thread, unsigned number, Random& random);
  void step(Random& random);
  void call(Service service, Random& random);
  Service serviceOf(Random& random) const;
  void meet();
  bool over() const;
  void end();
  [[noreturn]] void hang() const;

  const Theme& mTheme;
  const uint64_t mSeed;
  const Service mService;
  std::atomic<uint64_t> mCallbacks{0};
  std::atomic<int> mInside{0};  // calls under way inside callbacks
  std::atomic<bool> mClosing{false};

  mutable std::mutex mMutex;  // guards all members below
  std::condition_variable mChanged;
  unsigned mArrived = 0;
  uint64_t mMeetings = 0;
  unsigned mDone = 0;
  std::vector<std::thread> mThreads;
};

}  // namespace torture
