// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Races of disable with the callbacks of the service, with the next enable, with a request and with
// the disable of another service. Each test counts how often a promise was broken. A period of a
// service is the time from an enable to its disable.
#include <gtest/gtest.h>
#include <poll.h>

#include <algorithm>
#include <array>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "AllocationStop.h"
#include "FunctionTable.h"
#include "Functions.h"
#include "LceFixture.h"
#include "Torture.h"
#include "lle.pb.h"
#include "orbsim/Daemon.h"
#include "orbsim/Handshake.h"

namespace torture {
namespace {

using std::chrono::milliseconds;

// Longer than any wait of disable, except for that for a callback; and long enough for a callback
// to begin.
constexpr milliseconds kLong(500);
constexpr milliseconds kShort(30);

// Records the calls of each function of the application. Never destroyed, because callbacks may
// come while the process exits. A call can be made to last, but ends when nothing has to wait for
// it any more.
class Calls {
 public:
  static Calls& get() {
    static Calls* const calls = new Calls;
    return *calls;
  }
  static constexpr size_t kFunctions = 256;

  // Removes all records. From now on the first call of each function lasts @p atMost.
  void clear(milliseconds atMost) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mAccounts = {};
    mAtMost = atMost;
  }
  void called(size_t number) {
    std::unique_lock<std::mutex> lock(mMutex);
    Account& account = mAccounts[number];
    ++account.calls;
    ++account.running;
    mChanged.notify_all();
    if (account.calls == 1) mChanged.wait_for(lock, mAtMost, [&] { return account.over; });
    --account.running;
    mChanged.notify_all();
  }
  bool waitForCall(size_t number, milliseconds atMost = std::chrono::seconds(20)) {
    std::unique_lock<std::mutex> lock(mMutex);
    return mChanged.wait_for(lock, atMost, [&] { return mAccounts[number].calls > 0; });
  }
  // Called when no function may run any more; true if none does.
  bool endOf(size_t number) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mAccounts[number].over = true;
    mChanged.notify_all();
    return mAccounts[number].running == 0;
  }
  size_t callsOf(size_t number) {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mAccounts[number].calls;
  }

 private:
  struct Account {
    size_t calls = 0;
    size_t running = 0;
    bool over = false;
  };
  std::mutex mMutex;  // guards everything
  std::condition_variable mChanged;
  std::array<Account, kFunctions> mAccounts;
  milliseconds mAtMost{0};
};

struct Owner {
  template <class... Values>
  static void called(size_t number, Values...) {
    Calls::get().called(number);
  }
};
using StatusTable = FunctionTable<Owner, Calls::kFunctions, status_e>;
using ReportTable =
    FunctionTable<Owner, Calls::kFunctions, LceEstimationReportStatus, LceEstimationReport>;

void ignoreStatus(status_e) {}

// Threads that begin at the same moment, after go() is called.
class Together {
 public:
  ~Together() { go(); }
  void add(std::function<void()> action) {
    mWanted = mThreads.size() + 1;
    mThreads.emplace_back([this, action = std::move(action)] {
      meet();
      action();
    });
  }
  // Lets them begin and joins them.
  void go() {
    mStarted = true;
    for (std::thread& thread : mThreads) thread.join();
    mThreads.clear();
  }

 private:
  void meet() {
    ++mArrived;
    while (!mStarted || mArrived < mWanted) sched_yield();
  }
  std::atomic<size_t> mWanted{0};
  std::atomic<size_t> mArrived{0};
  std::atomic<bool> mStarted{false};
  std::vector<std::thread> mThreads;
};

// A call with a short delay before it.
int lateBy(std::chrono::microseconds delay, int (*call)()) {
  const auto end = std::chrono::steady_clock::now() + delay;
  while (std::chrono::steady_clock::now() < end) {
  }
  return call();
}

// A call that another thread makes after begin().
class Overtaking {
 public:
  explicit Overtaking(std::function<void()> action)
      : mThread([this, action = std::move(action)] {
          await(mBegun, std::chrono::seconds(20));
          action();
          const std::lock_guard<std::mutex> lock(mMutex);
          mDone = true;
          mChanged.notify_all();
        }) {}
  ~Overtaking() { join(); }
  // Waits for the end of the call, but no longer than @p atMost.
  void begin(milliseconds atMost) {
    {
      const std::lock_guard<std::mutex> lock(mMutex);
      mBegun = true;
      mChanged.notify_all();
    }
    await(mDone, atMost);
  }
  void join() {
    begin(milliseconds(0));
    if (mThread.joinable()) mThread.join();
  }

 private:
  void await(const bool& condition, milliseconds atMost) {
    std::unique_lock<std::mutex> lock(mMutex);
    mChanged.wait_for(lock, atMost, [&] { return condition; });
  }
  std::mutex mMutex;  // guards the two
  std::condition_variable mChanged;
  bool mBegun = false;
  bool mDone = false;
  std::thread mThread;
};

// An ENABLE message has the same bytes for every service.
LceProto::ServiceMsg requestIn(const orbsim::Frame& frame) {
  LceProto::ServiceMsg message;
  const orbsim::Blob blob = frame.blob();
  EXPECT_TRUE(message.ParseFromArray(blob.data(), static_cast<int>(blob.size())));
  return message;
}
bool isEnable(const orbsim::Frame& frame, bool enable) {
  const LceProto::ServiceMsg message = requestIn(frame);
  return message.data().has_enable_msg() && message.data().enable_msg().enable() == enable;
}
LceProto::ServiceEventId eventOf(const orbsim::Frame& frame) { return requestIn(frame).event_id(); }

class LifecycleRaces : public ::testing::Test {
 protected:
  static orbsim::Options options() {
    orbsim::Options options;
    options.reportInterval = milliseconds(0);
    return options;
  }
  void startDaemon() { ASSERT_TRUE(mDaemon.start()) << mDaemon.error(); }
  void TearDown() override {
    for (const Service service : {kLce, kLle, kLli}) disable(service);
    EXPECT_TRUE(libraryThreadsEnd());
    Watchdog::stop();
  }
  // The daemon answers each LCE request of the kind @p asked with so many messages at once.
  void answer(LceProto::ServiceEventId asked, size_t count, const LceProto::ClientMsg& message) {
    mDaemon.setFrameHandler([asked, count, blob = servicetest::serialise(message)](
                                orbsim::Session& session, const orbsim::Frame& frame) {
      const bool meant = eventOf(frame) == asked && !isEnable(frame, false);
      for (size_t i = 0; meant && i < count; ++i) session.sendBlob(orbsim::kSdkTypeLce, blob);
      return true;
    });
  }
  // Repeats @p once, which returns whether the promise was kept.
  void repeat(const char* what, uint64_t otherwise, const std::function<bool()>& once) {
    const uint64_t repeats = countOr(otherwise);
    uint64_t broken = 0;
    for (uint64_t i = 0; i < repeats; ++i) {
      Watchdog::step("%s, repeat %llu", what, static_cast<unsigned long long>(i + 1));
      if (!once()) ++broken;
      mDaemon.clearRecords();
    }
    printf("%s: %llu of %llu repeats\n", what, static_cast<unsigned long long>(broken),
           static_cast<unsigned long long>(repeats));
    EXPECT_EQ(0u, broken) << what;
  }

  orbsim::Daemon mDaemon{options()};
};

// A callback of an earlier period of the service still runs. The disable of the next period waits
// for it, too.
TEST_F(LifecycleRaces, DisableWaitsForTheCallbackOfAnEarlierPeriod) {
  startDaemon();
  repeat("a callback outlived the disable that follows", 2, [&] {
    Calls::get().clear(kLong);
    EXPECT_EQ(1, orb_lle_enable(StatusTable::at(0)));
    EXPECT_TRUE(Calls::get().waitForCall(0));
    static std::atomic<int> disabledInside{-1};
    disabledInside = -1;
    EXPECT_EQ(1, orb_lce_enable([](status_e) {
                int first = -1;
                disabledInside.compare_exchange_strong(first, orb_lle_disable());
              }));
    EXPECT_TRUE(comesTo([] { return disabledInside != -1; }));
    EXPECT_EQ(1, disabledInside);
    EXPECT_EQ(1, orb_lle_enable(ignoreStatus));
    EXPECT_EQ(1, orb_lle_disable());
    const bool kept = Calls::get().endOf(0);
    EXPECT_EQ(1, orb_lce_disable());
    return kept;
  });
}

// One thread enables with a new function, then destroys. Another thread destroys, too, while enable
// is at one of its allocations; each round uses the next one. If the library allows it, the
// function is being called at that moment. After its own destroy the function does not run any
// more, unless that destroy was refused.
TEST_F(LifecycleRaces, TheFunctionOfANewPeriodIsNotCalledByTheEarlierOne) {
  answer(LceProto::ENABLE, 3000, lcetest::statusInd(LceProto::SUCCESS));
  startDaemon();
  bool reached = true;
  uint64_t broken = 0;
  size_t place = 0;
  while (reached) {
    Watchdog::step("destroy at allocation %zu of enable", ++place);
    Calls::get().clear(kLong);
    EXPECT_EQ(1, orb_lce_enable(StatusTable::at(0)));
    EXPECT_TRUE(Calls::get().waitForCall(0));
    Calls::get().endOf(0);
    Overtaking other([] { destroySdfClient(); });
    {
      const AllocationStop stop(place, [&] {
        Calls::get().waitForCall(1, kShort);
        other.begin(kShort);
      });
      EXPECT_EQ(1, orb_lce_enable(StatusTable::at(1)));
      reached = stop.reached();
    }
    if (Calls::get().callsOf(1) == 0) Calls::get().endOf(1);
    const bool destroyed = destroySdfClient() == 0;
    if (destroyed && !Calls::get().endOf(1)) ++broken;
    other.join();
    Calls::get().endOf(1);
  }
  printf("a new function ran in the earlier period: at %llu of %zu places inside enable\n",
         static_cast<unsigned long long>(broken), place - 1);
  EXPECT_GT(place, 1u);
  EXPECT_EQ(0u, broken);
}

// Another thread disables while a request is at one of its allocations; each round uses the next
// one. The request is refused, and its function is not called.
TEST_F(LifecycleRaces, TheFunctionOfARefusedRequestIsNotCalled) {
  answer(LceProto::GET_LAST_ESTIMATION_REPORT, 10000, lcetest::lastReport(1, 1, 1, 1, "NONE"));
  startDaemon();
  bool reached = true;
  uint64_t broken = 0;
  uint64_t refused = 0;
  size_t place = 0;
  while (reached) {
    Watchdog::step("destroy at allocation %zu of a request", ++place);
    Calls::get().clear(milliseconds(0));
    EXPECT_EQ(1, orb_lce_enable(ignoreStatus));
    EXPECT_EQ(0, lceGetLastEstimationReport(ReportTable::at(0)));
    EXPECT_TRUE(Calls::get().waitForCall(0));
    Overtaking other([] { destroySdfClient(); });
    const AllocationStop stop(place, [&] {
      Calls::get().waitForCall(1, kShort);
      other.begin(kLong);
    });
    const int64_t result = lceGetLastEstimationReport(ReportTable::at(1));
    reached = stop.reached();
    other.join();
    if (result == -5) ++refused;
    if (result == -5 && Calls::get().callsOf(1) > 0) ++broken;
  }
  printf("the function of a refused request was called: at %llu of %zu places inside\n",
         static_cast<unsigned long long>(broken), place - 1);
  EXPECT_GT(refused, 0u);
  EXPECT_EQ(0u, broken);
}

// The connections of two services are established. The third service waits in a handshake in which
// the daemon is silent. The services are disabled one directly after the other; the daemon gets
// each disable message.
TEST_F(LifecycleRaces, TheDisableMessageIsSentBesideASilentHandshake) {
  constexpr size_t kHealthy = 2;
  std::atomic<size_t> connections{0};
  mDaemon.setHandshake([&connections](int fd, uint32_t sessionId) {
    orbsim::HandshakeReply reply;
    if (++connections % (kHealthy + 1) != 0) return orbsim::performHandshake(fd, sessionId, reply);
    orbsim::sendHandshakeRecord(fd, orbsim::kHandshakeInit, sessionId);
    orbsim::readHandshakeReply(fd, reply);
    pollfd end = {fd, POLLRDHUP, 0};
    poll(&end, 1, -1);
    return false;
  });
  startDaemon();
  uint64_t repeats = 0;
  repeat("a connection ended without the disable message", 10, [&] {
    EXPECT_EQ(1, orb_lce_enable(ignoreStatus));
    EXPECT_EQ(1, orb_lli_enable(ignoreStatus));
    EXPECT_TRUE(mDaemon.waitForFrames(kHealthy));
    EXPECT_EQ(1, orb_lle_enable(ignoreStatus));
    EXPECT_TRUE(mDaemon.waitForConnections(kHealthy + 1));
    const std::chrono::microseconds late(repeats++ % 10 * 20);
    Together threads;
    threads.add([] { EXPECT_EQ(1, orb_lle_disable()); });
    threads.add([late] { EXPECT_EQ(1, lateBy(late, orb_lce_disable)); });
    threads.add([late] { EXPECT_EQ(1, lateBy(2 * late, orb_lli_disable)); });
    threads.go();
    EXPECT_TRUE(mDaemon.waitForConnectionsClosed(kHealthy + 1));
    const auto frames = mDaemon.frames();
    return std::count_if(frames.begin(), frames.end(),
                         [](const auto& frame) { return isEnable(frame, false); }) == kHealthy;
  });
}

}  // namespace
}  // namespace torture
