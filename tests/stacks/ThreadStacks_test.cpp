// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// Measures the stack use of each thread of the library, and of an application's thread in a call:
// with lines of maximum length, encryption of every record, rotation of files, messages of maximum
// size and depth, failing connections, callbacks that call all functions, and the stack of the
// platform's log. The printed table is in docs/porting.md.
#include <errno.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <future>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <thread>

#include "DeepMessages.h"
#include "DeepPlatform.h"
#include "Functions.h"
#include "LogTestPeer.h"
#include "PaintedStacks.h"
#include "TestKeys.h"
#include "Thread.h"

namespace {

using torture::Callbacks;
using torture::kLce;
using torture::kLle;
using torture::kLli;
using torture::Service;

constexpr char kLogs[] = "/data/vendor/orb_logs/";
constexpr int kManyFiles = 1010;    // more than are removed at a time
constexpr int kManyRecords = 3200;  // more than the queue holds
constexpr uint64_t kEndpoints[] = {105, 106, 107};
constexpr uint32_t kTypes[] = {orbsim::kSdkTypeLce, orbsim::kSdkTypeLle, orbsim::kSdkTypeLli};
constexpr Service kServices[] = {kLce, kLle, kLli};

// The size that <orb/sdl.h> requires for an application's threads.
constexpr size_t kCaller = size_t{32} * 1024;

// Whether memory for a long line fails on threads of the library, and how often it has failed. The
// log continues without that memory, so nothing else changes.
std::atomic<bool> logLacksMemory{false};
std::atomic<size_t> refusals{0};
constexpr size_t kLong = 100;

// Runs an action once in the next callback on a thread of this name. Callbacks that the action
// causes are ignored.
class Inside {
 public:
  static void called() {
    if (tBusy) return;
    std::function<void()> action;
    {
      const std::lock_guard<std::mutex> lock(mLock);
      ++mCalls;
      if (painted::nameHere() == mThread) {
        action.swap(mAction);
        mThread.clear();
      }
    }
    if (!action) return;
    tBusy = true;
    action();
    tBusy = false;
    mDone.set_value();
  }
  static std::future<void> next(const std::string& thread, std::function<void()> action) {
    const std::lock_guard<std::mutex> lock(mLock);
    mThread = thread;
    mAction = std::move(action);
    mDone = std::promise<void>();
    return mDone.get_future();
  }
  static size_t calls() {
    const std::lock_guard<std::mutex> lock(mLock);
    return mCalls;
  }

 private:
  static inline thread_local bool tBusy = false;
  static inline std::mutex mLock;
  static inline std::string mThread;
  static inline std::function<void()> mAction;
  static inline std::promise<void> mDone;
  static inline size_t mCalls = 0;
};

const Callbacks& callbacks() {
  static const auto called = [](auto...) { Inside::called(); };
  static const Callbacks all{called, called, called, called, called, called,
                             called, called, called, called, called, called};
  return all;
}

// Runs as an application's thread of this name.
void onThread(const char* name, const std::function<void()>& body) {
  std::thread([&] {
    pthread_setname_np(pthread_self(), name);
    body();
  }).join();
}

}  // namespace

struct EncryptedLogPeer {
  // Makes the current file full for the next record. For a thread that is inside the log.
  static void fillFile(EncryptedLog& log) {
    log.recordsInFile = static_cast<int>(log.getRecordsPerFile()) + 1;
  }
};

namespace {

// For every fifth record the file is full.
void turnFiles() {
  static std::atomic<unsigned> records{0};
  if (LogTestPeer::isWriting() && ++records % 5 == 0) {
    EncryptedLogPeer::fillFile(LogTestPeer::encryptedLog());
  }
}
// Also sends the log's signal to a thread of the library.
void turnFilesAndSignal() {
  turnFiles();
  if (isLibraryThread()) pthread_kill(pthread_self(), SIGUSR1);
}

__attribute__((noinline)) void useCallbacksShare() {
  char own[orb::utils::kCallbackStack];
  std::memset(own, 1, sizeof own);
  asm volatile("" : : "r"(own) : "memory");
}

bool comes(const std::future<void>& done) {
  return done.wait_for(std::chrono::seconds(60)) == std::future_status::ready;
}

class ThreadStacks : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    // The smallest stack of the C library on the library's platform.
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, size_t{128} * 1024);
    pthread_setattr_default_np(&attributes);
    pthread_attr_destroy(&attributes);
    ASSERT_EQ(0, setenv("TZ", "EST5EDT,M3.2.0,M11.1.0", 1));
    fillLogs();
    LogTestPeer::recordDump().setTimerInterval(std::chrono::milliseconds(20));
  }
  void SetUp() override {
    mDaemon.setAutoAnswer(false);
    ASSERT_TRUE(mDaemon.start()) << mDaemon.error();
  }
  void TearDown() override {
    logLacksMemory = false;
    deepplatform::setInLines(nullptr);
    for (const Service service : kServices) torture::disable(service);
    mDaemon.stop();
  }

  // A key of 4096 bits, and more old logs than are removed at a time.
  static void fillLogs() {
    const std::string head{'\xb8', '\x0b', 0, 0, 0, 0, 0, 0, 3};
    std::ofstream(std::string(kLogs) + "config/orb_log_config", std::ios::binary)
        << head << testkeys::madeUpPublicPem(4096);
    for (int i = 0; i < kManyFiles; ++i) {
      const std::string path = std::string(kLogs) + "other/orb_log_" +
                               program_invocation_short_name + "_old" + std::to_string(i);
      std::ofstream(path).put('x');
      const timespec times[] = {{0, UTIME_OMIT}, {1000000 + i, 0}};
      ASSERT_EQ(0, utimensat(AT_FDCWD, path.c_str(), times, 0));
    }
  }

  // A session of a service without a session.
  void awaitSession(Service service) {
    orbsim::Frame first;
    ASSERT_TRUE(mDaemon.waitForFrame(
        [&](const orbsim::Frame& frame) { return frame.header.source == kEndpoints[service]; },
        &first))
        << torture::nameOf(service);
    mSessions[service] = first.sessionId;
  }
  // Nothing of the earlier state is left.
  void leaveAll() {
    for (const Service service : kServices) torture::disable(service);
    for (const char* const name : {"orb-sdk", "orb-receiver", "orb-closer"}) {
      while (painted::anyRuns(name)) std::this_thread::yield();
    }
    ASSERT_TRUE(mDaemon.waitForConnectionsClosed(mDaemon.totals().connections));
    mDaemon.clearRecords();
  }
  // Each alone, with both callbacks.
  void begin(Service service) {
    ASSERT_NO_FATAL_FAILURE(leaveAll());
    onThread("app-enable", [&] {
      ASSERT_EQ(1, torture::enable(callbacks(), service));
      ASSERT_EQ(0, torture::create(callbacks(), service));
    });
    awaitSession(service);
  }
  void send(Service service, const orbsim::Blob& blob) {
    ASSERT_TRUE(mDaemon.sendBlob(mSessions[service], kTypes[service], blob));
  }

  // Calls everything that is allowed in a callback on a receiver thread.
  void callInsideReceivers() {
    for (const torture::Function& function : torture::functions()) {
      SCOPED_TRACE(function.name);
      ASSERT_NO_FATAL_FAILURE(begin(kLce));
      const auto done = Inside::next("orb-receiver", [&function] { function.call(callbacks()); });
      send(kLce, deepmessages::kStatus);
      ASSERT_TRUE(comes(done)) << function.name;
    }
  }
  // The same on the worker, which reports a refused connection.
  void callInsideWorker() {
    for (const torture::Function& function : torture::functions()) {
      SCOPED_TRACE(function.name);
      ASSERT_NO_FATAL_FAILURE(begin(kLce));
      mDaemon.setHandshake([](int, uint32_t) { return false; });
      const auto done = Inside::next("orb-sdk", [&function] { function.call(callbacks()); });
      ASSERT_TRUE(mDaemon.closeSession(mSessions[kLce]));
      while (done.wait_for(std::chrono::seconds(0)) != std::future_status::ready) {
        if (torture::request(callbacks(), kLce) < 0) break;
        done.wait_for(std::chrono::milliseconds(1));
      }
      ASSERT_TRUE(comes(done)) << function.name;
      mDaemon.setHandshake({});
    }
  }
  // The closing thread stops waiting for a worker that is blocked in a handshake.
  void leaveWorkerStuck() {
    ASSERT_NO_FATAL_FAILURE(begin(kLce));
    const auto entered = std::make_shared<std::promise<void>>();
    const auto first = std::make_shared<std::atomic<bool>>(true);
    mDaemon.setHandshake([entered, first](int fd, uint32_t) {
      if (first->exchange(false)) entered->set_value();
      pollfd end = {fd, POLLRDHUP, 0};
      poll(&end, 1, -1);
      return false;
    });
    ASSERT_EQ(1, torture::enable(callbacks(), kLle));
    ASSERT_TRUE(comes(entered->get_future()));
    const auto done = Inside::next("orb-receiver", [] { torture::disable(kLle); });
    send(kLce, deepmessages::kStatus);
    ASSERT_TRUE(comes(done));
    mDaemon.setHandshake({});
  }
  void sendEverything(Service service) {
    ASSERT_NO_FATAL_FAILURE(begin(service));
    const size_t before = Inside::calls();
    for (const orbsim::Blob& blob : deepmessages::all()) send(service, blob);
    // A frame that is not a message, and an unknown frame.
    const orbsim::Header strange = mDaemon.headerFor(mSessions[service], 77, 3);
    ASSERT_TRUE(mDaemon.sendFrame(mSessions[service], strange, {1, 2, 3}));
    const auto done = Inside::next("orb-receiver", [] {});
    send(service, deepmessages::kStatus);
    ASSERT_TRUE(comes(done));
    EXPECT_GT(Inside::calls(), before);
  }
  void sendLargestRequest() {
    ASSERT_NO_FATAL_FAILURE(begin(kLce));
    onThread("app-request", [] {
      LceReportingCriteria criteria = {};
      criteria.firstListCount = criteria.secondListCount = LCE_REPORTING_CRITERIA_LIST_MAX;
      for (int i = 0; i < LCE_REPORTING_CRITERIA_LIST_MAX; ++i) {
        criteria.firstList[i] = criteria.secondList[i] = ~0u;
      }
      EXPECT_GT(lceSetReportingCriteria(&criteria, callbacks().lceCriteria), 0);
      for (const torture::Function& function : torture::functions()) function.call(callbacks());
    });
  }

  void doEverything() {
    for (const Service service : kServices) {
      ASSERT_NO_FATAL_FAILURE(sendEverything(service));
    }
    ASSERT_NO_FATAL_FAILURE(callInsideReceivers());
    ASSERT_NO_FATAL_FAILURE(callInsideWorker());
    ASSERT_NO_FATAL_FAILURE(leaveWorkerStuck());
    ASSERT_NO_FATAL_FAILURE(sendLargestRequest());
  }
  // Records are queued and written later; there is no memory for those of the library.
  void doEverythingDeferred() {
    LogTestPeer::setDeferred(true);
    const std::string text(600, 'x');
    onThread("app-log", [&] {
      for (int i = 0; i < kManyRecords; ++i) {
        LogTestPeer::log().addLogRecord(4, "T", "File.cpp", "f", 1, "%s", text.c_str());
      }
    });
    logLacksMemory = true;
    ASSERT_NO_FATAL_FAILURE(doEverything());
    EXPECT_GT(refusals.exchange(0), 0u);
    logLacksMemory = false;
    LogTestPeer::setDeferred(false);
  }

  // The promised stack for a callback is available at its start and may be used.
  void useWhatCallbacksHave() {
    ASSERT_NO_FATAL_FAILURE(begin(kLce));
    for (const char* const thread : {"orb-receiver", "orb-sdk"}) {
      size_t left = 0;
      const auto done = Inside::next(thread, [&left] {
        left = painted::leftHere();
        useCallbacksShare();
      });
      mDaemon.setHandshake([](int, uint32_t) { return false; });
      ASSERT_TRUE(mDaemon.closeSession(mSessions[kLce]) || thread[4] == 's');
      while (done.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready) {
        ASSERT_GE(torture::request(callbacks(), kLce), 0);
      }
      EXPECT_GE(left,
                orb::utils::kCallbackStack + orb::utils::libraryShare(ThreadWork::Callbacks) / 2)
          << thread;
    }
  }

  orbsim::Daemon mDaemon{options()};
  uint32_t mSessions[torture::kServices] = {};

 private:
  static orbsim::Options options() {
    orbsim::Options options;
    options.reportInterval = std::chrono::milliseconds(0);
    return options;
  }
};

using Stacks = std::map<std::string, painted::Stack>;

void print(const Stacks& quiet, const Stacks& signalled) {
  std::printf("  %-16s %8s %8s %12s\n", "thread", "stack", "used", "with signals");
  for (const auto& [name, stack] : signalled) {
    std::printf("  %-16s %8zu %8zu %12zu\n", name.c_str(), stack.size, quiet.at(name).used,
                stack.used);
  }
}

void expectHalf(const painted::Stack& stack, ThreadWork work) {
  EXPECT_GT(stack.used, 0u);
  EXPECT_LE(2 * stack.used, orb::utils::libraryShare(work));
  // The minimum of the C library, in whole pages.
  EXPECT_GE(stack.size, orb::utils::stackFor(work));
  EXPECT_LE(stack.size, orb::utils::stackFor(work) + size_t{64} * 1024);
}

// The first enable makes the keys and sets the log up.
TEST_F(ThreadStacks, NoThreadTakesMoreThanHalfOfTheLibrarysShare) {
  deepplatform::setInLines(turnFiles);
  onThread("app-first", [] { ASSERT_EQ(1, torture::enable(callbacks(), kLce)); });
  ASSERT_TRUE(LogTestPeer::encryptionEnabled());
  ASSERT_NE(nullptr, LogTestPeer::hookLibrary());
  awaitSession(kLce);
  ASSERT_NO_FATAL_FAILURE(doEverything());
  ASSERT_NO_FATAL_FAILURE(doEverythingDeferred());
  const Stacks quiet = painted::stacks();

  deepplatform::setInLines(turnFilesAndSignal);
  ASSERT_NO_FATAL_FAILURE(doEverything());
  ASSERT_NO_FATAL_FAILURE(doEverythingDeferred());
  const Stacks stacks = painted::stacks();
  print(quiet, stacks);

  for (const char* const name : {"orb-sdk", "orb-receiver"}) {
    SCOPED_TRACE(name);
    expectHalf(stacks.at(name), ThreadWork::Callbacks);
  }
  for (const char* const name : {"orb-closer", "orb-log-dump", "orb-log-timer", "orb-log-remove"}) {
    SCOPED_TRACE(name);
    expectHalf(stacks.at(name), ThreadWork::Library);
  }
  for (const char* const name : {"app-first", "app-enable", "app-request", "app-log"}) {
    EXPECT_LE(2 * stacks.at(name).used, kCaller) << name;
  }
  deepplatform::setInLines(nullptr);
  useWhatCallbacksHave();
}

}  // namespace

void* operator new(size_t size) {
  if (logLacksMemory && size > kLong && isLibraryThread() && LogTestPeer::isWriting()) {
    ++refusals;
    throw std::bad_alloc();
  }
  if (void* const memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, size_t) noexcept { std::free(memory); }
