// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// An application has classes with the same names as classes inside the library, and exports them.
// Neither side may use the other's classes.
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <string>
#include <thread>

#include "Application.h"
#include "orbsim/Daemon.h"

namespace {

std::atomic<int> ownCalls{0};
std::atomic<bool> inOwnUse{false};

// If the library calls this, also at process exit, it ends the process with a failure.
void ownCall(const char* name) {
  ++ownCalls;
  if (inOwnUse) return;
  std::fprintf(stderr, "the library has called the application's %s\n", name);
  _exit(99);
}

class OwnUse {
 public:
  OwnUse() { inOwnUse = true; }
  OwnUse(const OwnUse&) = delete;
  OwnUse& operator=(const OwnUse&) = delete;
  ~OwnUse() { inOwnUse = false; }
};

}  // namespace

struct WritingMark {
  WritingMark() { ownCall("mark of a thread"); }
  bool set = false;
};

class Log {
 public:
  static Log* getInstance();
  void init(const char* tag);
  void release();
  void addLogRecord(int level, const char* tag, const char* file, const char* function, int line,
                    const char* format, ...);
  static thread_local WritingMark writing;
};

Log* Log::getInstance() {
  ownCall("Log::getInstance");
  static Log log;
  return &log;
}
void Log::init(const char*) { ownCall("Log::init"); }
void Log::release() { ownCall("Log::release"); }
void Log::addLogRecord(int, const char*, const char*, const char*, int, const char*, ...) {
  ownCall("Log::addLogRecord");
}
thread_local WritingMark Log::writing;

class SdkLog {
 public:
  static void print(int level, const char* tag, const char* file, const char* function, int line,
                    const char* format, ...);
};
void SdkLog::print(int, const char*, const char*, const char*, int, const char*, ...) {
  ownCall("SdkLog::print");
}

std::string escapePercent(const std::string& text) {
  ownCall("escapePercent");
  return text;
}
uint64_t currentProcess() {
  ownCall("currentProcess");
  return 0;
}

// Classes with virtual functions, so that there are tables and type information with these names.
#define OWN_CLASS(Name)                 \
  class Name {                          \
   public:                              \
    Name() { ownCall(#Name); }          \
    virtual ~Name();                    \
    virtual const char* name() const;   \
  };                                    \
  Name::~Name() { ownCall("~" #Name); } \
  const char* Name::name() const { return #Name; }
OWN_CLASS(Lce)
OWN_CLASS(Lle)
OWN_CLASS(Lli)
OWN_CLASS(Service)
OWN_CLASS(SdkBase)
OWN_CLASS(SdkClient)
OWN_CLASS(SdkClientBase)
OWN_CLASS(EventManager)
OWN_CLASS(OrbTimer)
OWN_CLASS(OrbIpcSession)
OWN_CLASS(ProcessHandler)
OWN_CLASS(CryptoUtil)
OWN_CLASS(DiagCmdProcessor)
#undef OWN_CLASS

namespace {

using namespace application;

template <class... Classes>
void useEach() {
  for (const char* name : {Classes().name()...}) EXPECT_STRNE("", name);
}

// On a separate thread, whose end does not use the library.
void useOwnClasses() {
  std::thread([] {
    const OwnUse own;
    Log::writing.set = true;
    Log::getInstance()->init("application");
    Log::getInstance()->addLogRecord(3, "T", "File.cpp", "f", 1, "text");
    Log::getInstance()->release();
    SdkLog::print(3, "T", "File.cpp", "f", 1, "text");
    EXPECT_EQ("%", escapePercent("%"));
    EXPECT_EQ(0u, currentProcess());
    useEach<Lce, Lle, Lli, Service, SdkBase, SdkClient, SdkClientBase, EventManager, OrbTimer,
            OrbIpcSession, ProcessHandler, CryptoUtil, DiagCmdProcessor>();
  }).join();
}

TEST(ForeignNames, LibraryAndApplicationEachUseTheirOwn) {
  orbsim::Options options;
  options.reportInterval = std::chrono::milliseconds(1);
  orbsim::Daemon daemon(options);
  ASSERT_TRUE(daemon.start()) << daemon.error();
  ASSERT_EQ(1, orb_lce_enable(onStatus));
  ASSERT_TRUE(state().waitFor(Event::Status, STATUS_SUCCESS));
  ASSERT_EQ(0, lceRegEstimationReports(onReport));
  ASSERT_EQ(0, lcePerformReportingAction(LCE_REPORTING_ACTION_START));
  ASSERT_TRUE(state().waitForAny(Event::Report, 3));
  EXPECT_EQ(0, ownCalls);
  useOwnClasses();
  const int calls = ownCalls;
  EXPECT_LT(0, calls);
  EXPECT_EQ(1, orb_lce_disable());
  EXPECT_TRUE(daemon.waitForSessionsClosed(1));
  EXPECT_EQ(calls, ownCalls);
  // The log ends with the process, after this test.
}

}  // namespace
