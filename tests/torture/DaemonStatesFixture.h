// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <ostream>
#include <string>
#include <vector>

#include "Functions.h"
#include "RecordingPlatform.h"
#include "Torture.h"
#include "orbsim/Daemon.h"
#include "orbsim/Handshake.h"

namespace torture {

// The same number in both generations.
inline void awaitSuccesses(size_t count) {
  heard().waitFor([](const Heard& call) { return call.isStatus() && call.value == STATUS_SUCCESS; },
                  count, HeardCalls::kWatched);
}

class DaemonStatesTest;

// One way for the daemon to misbehave. set() brings the daemon into this state, reach() waits until
// the library has met it.
struct DaemonState {
  const char* name;
  void (*set)(DaemonStatesTest& test);
  void (*reach)(DaemonStatesTest& test);

  friend std::ostream& operator<<(std::ostream& out, const DaemonState& state) {
    return out << state.name;
  }
};

// Disables one service after the other, then all together, by each of the two functions, while the
// daemon is in the state. Disable returns in time, nothing is left, and the next enable works.
class DaemonStatesTest : public ::testing::TestWithParam<DaemonState> {
 public:
  using Script = void (*)(int fd, uint32_t sessionId);

  orbsim::Daemon& daemon() { return mDaemon; }
  const std::vector<Service>& services() const { return mServices; }

  void start() {
    if (!mDaemon.start()) ADD_FAILURE() << mDaemon.error();
  }
  // The daemon runs @p script instead of the handshake. Then it closes the connection, or with
  // @p hangUp false does nothing until the client closes it.
  void shakeHands(Script script, bool hangUp) {
    mDaemon.setHandshake([this, script, hangUp](int fd, uint32_t sessionId) {
      script(fd, sessionId);
      reached();
      pollfd end = {fd, POLLRDHUP, 0};
      if (!hangUp) poll(&end, 1, -1);
      return false;
    });
    start();
  }
  // After the first frame of a connection the daemon does @p action.
  void afterTheFirstFrame(void (*action)(orbsim::Session& session)) {
    mDaemon.setFrameHandler([this, action](orbsim::Session& session, const orbsim::Frame&) {
      action(session);
      reached();
      return true;
    });
    start();
  }
  void reached() {
    const std::lock_guard<std::mutex> lock(mMutex);
    ++mReached;
    mChanged.notify_all();
  }
  void waitReached(size_t count) {
    std::unique_lock<std::mutex> lock(mMutex);
    mChanged.wait(lock, [&] { return mReached >= count; });
  }
  static void waitForLine(const char* part) {
    EXPECT_TRUE(recording::waitFor([part](const recording::Line& line) {
      return line.text.find(part) != std::string::npos;
    })) << part;
  }
  // A descriptor that belongs to the state; closed when the state ends.
  void hold(int fd) { mHeld.push_back(fd); }

 protected:
  // The promise is 500 ms. The limit is longer for sanitizers and a machine under load.
  static constexpr std::chrono::milliseconds kBound{2000};

  void SetUp() override {
    mServices = {kLce, kLle, kLli};
    for (int i = 0; i < 2; ++i) wholeCycle();  // creates what exists once per process
    mBefore = Census();
  }
  void TearDown() override {
    Watchdog::stop();
    printf("%s: disabled %zu times, longest %lld ms\n", GetParam().name, mDisabled,
           static_cast<long long>(mLongest.count()));
  }

  void endOf(Service service, bool second) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(second ? 0 : 1, second ? destroy(service) : disable(service)) << nameOf(service);
    const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now() - start);
    EXPECT_LT(took.count(), kBound.count()) << nameOf(service);
    mLongest = std::max(mLongest, took);
    ++mDisabled;
  }
  void begin(Service service, bool second) {
    EXPECT_EQ(second ? 0 : 1,
              second ? create(hearing(), service) : torture::enable(hearing(), service));
  }
  // Enables and disables with a daemon that does not misbehave.
  void wholeCycle() {
    start();
    for (const bool second : {false, true}) {
      heard().clear();
      for (const Service service : mServices) begin(service, second);
      awaitSuccesses(mServices.size());
      for (const Service service : mServices) endOf(service, second);
    }
    clearAway();
  }
  void clearAway() {
    EXPECT_TRUE(libraryThreadsEnd());
    for (const int fd : mHeld) close(fd);
    mHeld.clear();
    mDaemon.stop();
    remove(mDaemon.socketPath().c_str());
    mDaemon.setHandshake({});
    mDaemon.setFrameHandler({});
    mDaemon.setReading(true);
    mDaemon.setAccepting(true);
    mDaemon.clearRecords();
    recording::clear();
    const std::lock_guard<std::mutex> lock(mMutex);
    mReached = 0;
  }
  void disableIn(const DaemonState& state, bool second) {
    Watchdog::step("%s of %zu services: %s", second ? "destroy" : "disable", mServices.size(),
                   state.name);
    state.set(*this);
    for (const Service service : mServices) begin(service, second);
    state.reach(*this);
    for (const Service service : mServices) endOf(service, second);
    const size_t before = heard().count();
    clearAway();
    EXPECT_EQ(before, heard().count()) << "a callback after the end";
    EXPECT_TRUE(comesBackTo(mBefore))
        << mBefore.descriptors << " descriptors, " << mBefore.threads << " threads -> "
        << Census().descriptors << ", " << Census().threads;
    wholeCycle();
  }
  void disableEach() {
    const std::vector<std::vector<Service>> sets{{kLce}, {kLle}, {kLli}, {kLce, kLle, kLli}};
    for (uint64_t round = 0; round < countOr(1); ++round) {
      for (const auto& set : sets) {
        for (const bool second : {false, true}) {
          mServices = set;
          disableIn(GetParam(), second);
        }
      }
    }
  }

 private:
  static orbsim::Options options() {
    orbsim::Options options;
    options.reportInterval = std::chrono::milliseconds(1);
    options.record = false;
    return options;
  }

  orbsim::Daemon mDaemon{options()};
  std::vector<Service> mServices;
  std::vector<int> mHeld;
  Census mBefore;
  size_t mDisabled = 0;
  std::chrono::milliseconds mLongest{0};
  std::mutex mMutex;  // guards mReached
  std::condition_variable mChanged;
  size_t mReached = 0;
};

}  // namespace torture
