// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The log with a hook library: complete, and with each of its functions missing.
#include <dlfcn.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>

#include "Built.h"
#include "LogTestPeer.h"
#include "ProcessState.h"
#include "Recorder.h"
#include "Thread.h"
#include "hooks/hook.h"

namespace {

struct HookLine {
  int level;
  std::string tag, format, text;
};
using HookLines = Recorder<HookLine>;

void recordHookLine(int level, const char* tag, const char* format, const char* text) {
  HookLines::get().add({level, tag, format, text});
}

std::vector<HookLine> hookLines() { return HookLines::get().all(); }

class LogHookTest : public LogFixture {
 protected:
  ~LogHookTest() override { HookLines::get().clear(); }

  // Initialises the log in the directory of one of the hook libraries.
  void initWith(const std::string& hook) {
    ASSERT_EQ(0, chdir((built(TEST_HOOKS_DIR) + "/" + hook).c_str()));
    // Kept open while the log opens it, so that the table can be filled before the first line.
    void* const library = dlopen("./liborbalog.so", RTLD_NOW);
    ASSERT_NE(nullptr, library) << dlerror();
    table(library)->alog = recordHookLine;
    log.init("app");
    dlclose(library);
  }

  static HookTable* table(void* library) {
    return static_cast<HookTable*>(dlsym(library, "hookTable"));
  }
  static HookTable* table() { return table(LogTestPeer::hookLibrary()); }

  static bool handlesSignal() {
    struct sigaction action = {};
    sigaction(SIGUSR1, nullptr, &action);
    return action.sa_handler != SIG_DFL;
  }
};

TEST_F(LogHookTest, HookTakesThePlaceOfThePlatformLog) {
  initWith("complete");
  log.addLogRecord(6, "ORB", "File.cpp", "f", 1, "%s", "100%");
  EXPECT_TRUE(recording::lines().empty());
  const std::vector<HookLine> lines = hookLines();
  ASSERT_EQ(2u, lines.size());
  EXPECT_EQ("|ORB|Log::printVersion:155 version ORB-20250524-d9c57ad5", lines[0].text);
  EXPECT_EQ(4, lines[0].level);
  EXPECT_EQ(6, lines[1].level);
  EXPECT_EQ("app", lines[1].tag);
  EXPECT_EQ("%s", lines[1].format);
  EXPECT_EQ("|ORB|File::f:1 100%", lines[1].text);
}

TEST_F(LogHookTest, PrintToAdbAndModuleDebugPassTheHookBy) {
  initWith("complete");
  log.printToAdb(3, "ORB", "File.cpp", "f", 1, "text");
  log.logModuleDebug("module");
  EXPECT_EQ((std::vector<std::string>{"|ORB|File::f:1 text", "| orbLog | module"}),
            recording::texts());
  EXPECT_EQ(1u, hookLines().size());
}

TEST_F(LogHookTest, DmapLinesGoToTheHookUnderTheirTag) {
  initWith("complete");
  log.dMapLog(4, "data %d");
  const HookLine line = hookLines().back();
  EXPECT_EQ(4, line.level);
  EXPECT_EQ("DMAP", line.tag);
  EXPECT_EQ("%s", line.format);
  EXPECT_EQ("data %d", line.text);
}

TEST_F(LogHookTest, SuppressedDmapLinesDoNotReachTheHook) {
  recording::setProperty(kLoggingProperty, "2");
  initWith("complete");
  log.dMapLog(3, "debug");
  EXPECT_EQ(1u, hookLines().size());
}

TEST_F(LogHookTest, HookWithoutLogFunctionIsClosed) {
  initWith("no_alog");
  EXPECT_EQ(nullptr, LogTestPeer::hookLibrary());
  EXPECT_FALSE(LogTestPeer::hasGetPersistSetting());
  EXPECT_FALSE(LogTestPeer::hasDecodeBuffer());
  EXPECT_FALSE(handlesSignal());
  const recording::Line line = recording::lines().at(0);
  EXPECT_EQ(6, line.priority);
  EXPECT_EQ("app", line.tag);
  EXPECT_EQ(0u, line.text.find("|ORB|Log::init:"));
  EXPECT_TRUE(endsWith(line.text, " cannot find main function"));
  EXPECT_TRUE(recording::has("|ORB|Log::printVersion:155 version ORB-20250524-d9c57ad5"));
}

TEST_F(LogHookTest, MissingPersistSettingEndsTheSearchButKeepsTheLogFunction) {
  initWith("no_get_persist_setting");
  EXPECT_NE(nullptr, LogTestPeer::hookLibrary());
  EXPECT_FALSE(LogTestPeer::hasGetPersistSetting());
  EXPECT_FALSE(LogTestPeer::hasDecodeBuffer());
  EXPECT_FALSE(handlesSignal());
  const HookLine line = hookLines().at(0);
  EXPECT_EQ(6, line.level);
  EXPECT_EQ(0u, line.text.find("|ORB|Log::init:"));
  EXPECT_TRUE(endsWith(line.text, " cannot find debug cmd function"));
}

TEST_F(LogHookTest, MissingDecodeBufferKeepsWhatWasFound) {
  initWith("no_decode_buffer");
  EXPECT_NE(nullptr, LogTestPeer::hookLibrary());
  EXPECT_TRUE(LogTestPeer::hasGetPersistSetting());
  EXPECT_FALSE(LogTestPeer::hasDecodeBuffer());
  EXPECT_FALSE(handlesSignal());
  EXPECT_TRUE(endsWith(hookLines().at(0).text, " cannot find debug cmd function"));
}

TEST_F(LogHookTest, ThreadsLetTheSignalThroughThatTheHookIsFor) {
  initWith("complete");
  sigset_t inside;
  Thread thread;
  ASSERT_TRUE(startThread(thread, "orb-test", ThreadWork::Library,
                          [&] { pthread_sigmask(SIG_BLOCK, nullptr, &inside); }));
  thread.join();
  EXPECT_EQ(0, sigismember(&inside, SIGUSR1));
  EXPECT_EQ(1, sigismember(&inside, SIGUSR2));
}

TEST_F(LogHookTest, SignalIsLoggedEvenInsideALogCallAndKeepsErrno) {
  initWith("complete");
  table()->alog = [](int, const char*, const char*, const char*) {
    // The log's mutex is locked here. The handler is called like a normal function, because the
    // recording platform allocates, which a handler of a real signal must not do.
    struct sigaction action = {};
    sigaction(SIGUSR1, nullptr, &action);
    errno = ENOTTY;
    action.sa_handler(SIGUSR1);
    EXPECT_EQ(ENOTTY, errno);
  };
  log.printVersion();
  ASSERT_EQ(1u, recording::lines().size());
  const recording::Line line = recording::lines()[0];
  EXPECT_EQ(3, line.priority);
  EXPECT_EQ("app", line.tag);
  EXPECT_EQ(0u, line.text.find("|ORB|Log::eintrTestHandler:"));
  EXPECT_TRUE(endsWith(line.text, " Received signal " + std::to_string(SIGUSR1)));
}

TEST_F(LogHookTest, PersistSettingHasTheSizeThatTheHookWrote) {
  initWith("complete");
  table()->getPersistSetting = [](unsigned char* setting, unsigned char* out) {
    out[0] = *setting;
    return 3;
  };
  unsigned char setting = 9;
  std::vector<unsigned char> out;
  EXPECT_TRUE(log.getPersistSetting(setting, out));
  EXPECT_EQ((std::vector<unsigned char>{9, 0, 0}), out);
}

TEST_F(LogHookTest, PersistSettingWithoutResultKeepsFiftyBytes) {
  initWith("complete");
  unsigned char setting = 9;
  std::vector<unsigned char> out;
  EXPECT_TRUE(log.getPersistSetting(setting, out));
  EXPECT_EQ(50u, out.size());
}

TEST_F(LogHookTest, PersistSettingWithoutHookFails) {
  unsigned char setting = 9;
  std::vector<unsigned char> out;
  EXPECT_FALSE(log.getPersistSetting(setting, out));
  EXPECT_TRUE(out.empty());
}

TEST_F(LogHookTest, DecodedCommandHasTheSizeThatTheHookWrote) {
  initWith("complete");
  table()->decodeBuffer = [](unsigned char* in, unsigned short inLength, unsigned char* out,
                             unsigned short* outLength) {
    EXPECT_EQ(64, *outLength);
    EXPECT_EQ(2, inLength);
    out[0] = in[1];
    *outLength = 1;
    return true;
  };
  unsigned char request[] = {1, 2};
  std::vector<unsigned char> out;
  EXPECT_TRUE(log.decodeBuff(request, sizeof request, out));
  EXPECT_EQ(std::vector<unsigned char>{2}, out);
  EXPECT_EQ("|ORB|Log::decodeBuff:303 outputlen:1 ", hookLines().back().text);
}

TEST_F(LogHookTest, CommandThatTheHookRefusesKeepsSixtyFourBytes) {
  initWith("complete");
  unsigned char request[] = {1};
  std::vector<unsigned char> out;
  EXPECT_FALSE(log.decodeBuff(request, sizeof request, out));
  EXPECT_EQ(64u, out.size());
}

TEST_F(LogHookTest, ReleaseFromInsideALogCallOfTheDumperDoesNotWaitForItself) {
  initWith("complete");
  HookLines::get().inNext(
      [](const HookLine& line) { return line.text.find("Dump completed") != std::string::npos; },
      [] { Log::getInstance()->release(); });
  log.addDumpRequest(Log::USER_COMMAND);
  while (LogTestPeer::initialised()) std::this_thread::yield();
  while (processstate::threadsNamed("orb-log-dump") > 0) std::this_thread::yield();
  EXPECT_EQ(0u,
            LogTestPeer::recordDump().queuedRequests());  // it took the shutdown request
}

TEST_F(LogHookTest, ProcessMayEndInsideALogCall) {
  EXPECT_EXIT(
      {
        alarm(20);
        initWith("complete");
        table()->alog = [](int, const char*, const char*, const char*) { exit(7); };
        log.addDumpRequest(Log::USER_COMMAND);  // the dumper waits for the mutex, or has exited
        log.printVersion();
      },
      testing::ExitedWithCode(7), "");
}

}  // namespace
