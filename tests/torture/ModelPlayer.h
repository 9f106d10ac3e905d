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

// What is likely in a round. Of the first group each number is a share of the calls, of the second
// one in so many, 0 for none.
struct Theme {
  const char* name;
  unsigned threads;
  unsigned scenes;  // each is begun by all threads at the same moment
  unsigned steps;   // at most, in a scene

  uint32_t enables;
  uint32_t disables;
  uint32_t requests;
  uint32_t invalids;
  uint32_t waits;

  uint32_t callsInside;  // callbacks that make a call
  uint32_t lingers;      // callbacks that take their time, so long at most
  uint32_t lingering;    // in milliseconds
  uint32_t stops;        // calls that are stopped at some allocation, for others to come between

  bool oneService;
  bool together;  // scenes alternate: each thread enables its service; each disables it
  uint32_t flood;
  bool harmful;
};
const std::vector<Theme>& themes();

// The application of one round: threads that make calls at random, and callbacks that do so too.
// Made, played and destroyed by the thread of the round; one at a time.
class ModelPlayer {
 public:
  ModelPlayer(const Theme& theme, uint64_t seed);
  ~ModelPlayer();
  ModelPlayer(const ModelPlayer&) = delete;
  ModelPlayer& operator=(const ModelPlayer&) = delete;

  // All scenes, while the daemon does what it wants; then everything is disabled.
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
  std::atomic<int> mInside{0};  // calls of callbacks under way
  std::atomic<bool> mClosing{false};

  mutable std::mutex mMutex;  // guards what follows
  std::condition_variable mChanged;
  unsigned mArrived = 0;
  uint64_t mMeetings = 0;
  unsigned mDone = 0;
  std::vector<std::thread> mThreads;
};

}  // namespace torture
