// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "Log.h"

#include <cerrno>
#include <stdexcept>
#include <thread>

#include "LogProperties.h"
#include "LogTestPeer.h"
#include "RecordDumpPeer.h"

namespace {

const char kVersionLine[] = "|ORB|Log::printVersion:155 version ORB-20250524-d9c57ad5";

class LogTest : public LogFixture {};

TEST_F(LogTest, LineShowsTagFileFunctionNumberAndText) {
  log.addLogRecord(4, "ORB", "le/utils/orb_ipc/src/OrbIpcSession.cpp", "connect", 43, "id %d", 7);
  ASSERT_EQ(1u, recording::lines().size());
  const recording::Line line = recording::lines()[0];
  EXPECT_EQ("|ORB|OrbIpcSession::connect:43 id 7", line.text);
  EXPECT_EQ(4, line.priority);
  EXPECT_TRUE(line.hasTag);
  EXPECT_EQ("", line.tag);
}

TEST_F(LogTest, FileShowsWithoutFoldersAndWithoutItsLastExtension) {
  log.addLogRecord(3, "ORB", "File.cpp", "f", 1, "a");
  log.addLogRecord(3, "ORB", "dir.d/File", "f", 1, "b");
  log.addLogRecord(3, "ORB", "/x/File.tab.cpp", "f", 1, "c");
  log.addLogRecord(3, "ORB", "x/", "f", -1, "d");
  EXPECT_EQ((std::vector<std::string>{"|ORB|File::f:1 a", "|ORB|File::f:1 b",
                                      "|ORB|File.tab::f:1 c", "|ORB|::f:-1 d"}),
            recording::texts());
}

TEST_F(LogTest, LineWithoutFileIsALogicError) {
  EXPECT_THROW(log.addLogRecord(3, "ORB", nullptr, "f", 1, "text"), std::logic_error);
  ORB_LOGD("the log still works");
  EXPECT_TRUE(recording::hasEndingWith(" the log still works"));
}

TEST_F(LogTest, MacrosFillLevelTagAndPosition) {
  ORB_LOGV("v");
  ORB_LOGD("d %d", 1);
  ORB_LOGI("i");
  ORB_LOGE("e");
  ORB_LOG_AT(5, 99, "w");
  const std::vector<recording::Line> lines = recording::lines();
  ASSERT_EQ(5u, lines.size());
  const int levels[] = {2, 3, 4, 6, 5};
  for (size_t i = 0; i < 5; ++i) EXPECT_EQ(levels[i], lines[i].priority);
  EXPECT_EQ("|ORB|Log_test::TestBody:99 w", lines[4].text);
  EXPECT_TRUE(endsWith(lines[1].text, " d 1"));
}

TEST_F(LogTest, LineIsCutTo511Characters) {
  const std::string head = "|ORB|File::f:1 ";
  const std::string text(600, 'x');
  const std::string expected = head + std::string(511 - head.size(), 'x');
  log.addLogRecord(3, "ORB", "File.cpp", "f", 1, "%s", text.c_str());
  log.printToAdb(3, "ORB", "File.cpp", "f", 1, "%s", text.c_str());
  log.logModuleDebug("%s", text.c_str());
  EXPECT_EQ(2u, recording::count(expected));
  EXPECT_TRUE(recording::has("| orbLog | " + std::string(500, 'x')));
}

TEST_F(LogTest, LongConstantTextIsCutAlike) {
  const std::string text(600, 'x');
  const char* const format = text.c_str();
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"
  log.addLogRecord(3, "ORB", "File.cpp", "f", 1, format);
#pragma GCC diagnostic pop
  EXPECT_EQ(511u, recording::texts().at(0).size());
}

TEST_F(LogTest, PercentInARecordIsNotFormattedAgain) {
  log.addLogRecord(3, "ORB", "File.cpp", "f", 1, "%s", "100%d");
  EXPECT_EQ("|ORB|File::f:1 100%d", recording::texts().at(0));
}

TEST_F(LogTest, DoubledPercentInAFormatIsOne) {
  log.addLogRecord(3, "ORB", "File.cpp", "f", 1, "100%%");
  EXPECT_EQ("|ORB|File::f:1 100%", recording::texts().at(0));
}

TEST_F(LogTest, LineWithoutHookAndRecordTakesNoLock) {
  log.init("app");
  {
    const LockGuard lock(LogTestPeer::mutex());
    log.addLogRecord(3, "ORB", "File.cpp", "f", 1, "in between");
  }
  EXPECT_TRUE(recording::has("|ORB|File::f:1 in between"));
}

TEST_F(LogTest, ErrnoSurvivesEveryWriter) {
  recording::setDiagListening(true);
  errno = ENOTTY;
  log.addLogRecord(3, "ORB", "File.cpp", "f", 1, "a %d", 1);
  log.printToAdb(3, "ORB", "File.cpp", "f", 1, "b");
  log.logModuleDebug("c");
  log.printVersion();
  log.dMapLog(3, "d");
  EXPECT_EQ(ENOTTY, errno);
}

TEST_F(LogTest, InitWithoutHookSaysSoAndPrintsTheVersion) {
  log.init("app");
  const std::vector<recording::Line> lines = recording::lines();
  ASSERT_EQ(2u, lines.size());
  EXPECT_EQ("|ORB|Log::init:225 cannot open liborbalog.so", lines[0].text);
  EXPECT_EQ(6, lines[0].priority);
  EXPECT_EQ("app", lines[0].tag);
  EXPECT_EQ(kVersionLine, lines[1].text);
  EXPECT_EQ(4, lines[1].priority);
  EXPECT_EQ("app", lines[1].tag);
}

TEST_F(LogTest, LaterInitChangesTheTagAndNothingElse) {
  log.init("first");
  recording::clear();
  recording::setProperty(kLoggingProperty, "1");
  log.init("second");
  EXPECT_TRUE(recording::lines().empty());
  log.printVersion();
  log.printToAdb(5, "ORB", "File.cpp", "f", 1, "adb");
  log.logModuleDebug("module");
  for (const recording::Line& line : recording::lines()) EXPECT_EQ("second", line.tag);
  EXPECT_EQ(1u,
            LogTestPeer::recordDump().queuedRecords());  // only printToAdb's; still not deferred
}

TEST_F(LogTest, InitWithoutTagUsesAnEmptyOne) {
  log.init(nullptr);
  EXPECT_EQ("", recording::lines().at(0).tag);
}

TEST_F(LogTest, ConcurrentInitsSetUpOnce) {
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) threads.emplace_back([this] { log.init("app"); });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(1u, recording::count(kVersionLine));
  EXPECT_TRUE(LogTestPeer::initialised());
}

TEST_F(LogTest, LogPermsPropertyIsRead) {
  log.init("app");
  EXPECT_FALSE(LogTestPeer::logPermsEnabled());
  LogTestPeer::reset();
  recording::setProperty("persist.vendor.data.orb.log_perms", "true");
  log.init("app");
  EXPECT_TRUE(LogTestPeer::logPermsEnabled());
}

TEST_F(LogTest, RecordGoesToTheDiagnosticChannelAtOnce) {
  recording::setDiagListening(true);
  log.addLogRecord(6, "ORB", "File.cpp", "f", 1, "text");
  ASSERT_EQ(1u, recording::packets().size());
  EXPECT_EQ(0x1E15, recording::packets()[0].code);
  EXPECT_TRUE(endsWith(packetText(recording::packets()[0]), " E ORB : |ORB|File::f:1 text"));
  EXPECT_EQ(0u, LogTestPeer::recordDump().queuedRecords());
}

TEST_F(LogTest, NobodyListeningGetsNothing) {
  log.addLogRecord(6, "ORB", "File.cpp", "f", 1, "text");
  EXPECT_TRUE(recording::packets().empty());
  EXPECT_EQ(0u, LogTestPeer::recordDump().queuedRecords());
}

TEST_F(LogTest, PropertyValue1MakesRecordsWaitForTheNextDump) {
  recording::setProperty(kLoggingProperty, "1");
  recording::setDiagListening(true);
  log.init("app");
  EXPECT_TRUE(recording::packets().empty());
  EXPECT_EQ(2u, LogTestPeer::recordDump().queuedRecords());
  log.addDumpRequest(Log::USER_COMMAND);
  ASSERT_TRUE(recording::waitForPackets(2));
  EXPECT_TRUE(endsWith(packetText(recording::packets()[0]),
                       " E ORB : |ORB|Log::init:225 cannot open liborbalog.so"));
  EXPECT_TRUE(
      endsWith(packetText(recording::packets()[1]), std::string(" I ORB : ") + kVersionLine));
}

TEST_F(LogTest, PropertyValue2SuppressesDmapDebugOnly) {
  recording::setProperty(kLoggingProperty, "2");
  log.init("app");
  recording::setDiagListening(true);
  log.dMapLog(3, "debug");
  log.dMapLog(4, "info");
  ASSERT_EQ(1u, recording::packets().size());
  EXPECT_TRUE(endsWith(packetText(recording::packets()[0]), " I DMAP : info"));
}

TEST_F(LogTest, PropertyValue4SuppressesAllDmap) {
  recording::setProperty(kLoggingProperty, "4");
  log.init("app");
  recording::setDiagListening(true);
  for (int level = 0; level < 8; ++level) log.dMapLog(level, "text");
  EXPECT_TRUE(recording::packets().empty());
}

TEST_F(LogTest, EachBitOfThePropertyCountsByItself) {
  const struct {
    const char* value;
    bool deferred, debug,
        others;  // whether records wait for the next dump; which lines of the data path are logged
  } kCases[] = {
      {"0", false, true, true},   {"1", true, true, true},    {"2", false, false, true},
      {"3", true, false, true},   {"4", false, false, false}, {"5", true, false, false},
      {"6", false, false, false}, {"7", true, false, false},  {"8", false, true, true},
      {"0x3", true, false, true}, {"-1", true, false, false}, {"none", false, true, true},
  };
  for (const auto& c : kCases) {
    LogTestPeer::reset();
    recording::setProperty(kLoggingProperty, c.value);
    log.init("app");
    recording::clear();
    recording::setDiagListening(true);
    log.dMapLog(3, "debug");
    EXPECT_EQ(size_t{c.debug}, recording::packets().size()) << c.value;
    log.dMapLog(6, "error");
    EXPECT_EQ(size_t{c.debug} + size_t{c.others}, recording::packets().size()) << c.value;
    const size_t queued = LogTestPeer::recordDump().queuedRecords();
    log.printVersion();
    EXPECT_EQ(queued + size_t{c.deferred}, LogTestPeer::recordDump().queuedRecords()) << c.value;
    recording::setDiagListening(false);
  }
}

TEST_F(LogTest, LongDmapLineIsCutWithItsHeadTo511Characters) {
  recording::setDiagListening(true);
  log.dMapLog(6, std::string(600, 'x'));
  ASSERT_EQ(1u, recording::packets().size());
  EXPECT_EQ(511u, packetText(recording::packets()[0]).size());
}

TEST_F(LogTest, DmapGoesToTheDiagnosticChannelOnlyDeferredOrNot) {
  recording::setProperty(kLoggingProperty, "1");
  log.init("app");
  recording::clear();
  recording::setDiagListening(true);
  const size_t queued = LogTestPeer::recordDump().queuedRecords();
  log.dMapLog(3, "100%d");
  EXPECT_TRUE(recording::lines().empty());
  ASSERT_EQ(1u, recording::packets().size());
  EXPECT_TRUE(endsWith(packetText(recording::packets()[0]), " D DMAP : 100%d"));
  EXPECT_EQ(queued, LogTestPeer::recordDump().queuedRecords());
}

TEST_F(LogTest, PrintToAdbQueuesWhateverTheProperties) {
  recording::setDiagListening(true);
  log.printToAdb(6, "TAG", "File.cpp", "f", 1, "text %s", "%d");
  EXPECT_EQ("|TAG|File::f:1 text %d", recording::texts().at(0));
  EXPECT_EQ(6, recording::lines()[0].priority);
  EXPECT_EQ(1u, LogTestPeer::recordDump().queuedRecords());
  EXPECT_TRUE(recording::packets().empty());
}

TEST_F(LogTest, ModuleDebugLinesHaveTheirOwnShape) {
  log.logModuleDebug("value %d", 5);
  EXPECT_EQ("| orbLog | value 5", recording::texts().at(0));
  EXPECT_EQ(3, recording::lines()[0].priority);
  EXPECT_EQ(0u, LogTestPeer::recordDump().queuedRecords());
}

TEST_F(LogTest, ModuleDebugLineIsCutTo511Characters) {
  log.logModuleDebug("%s", std::string(600, 'x').c_str());
  EXPECT_EQ("| orbLog | " + std::string(500, 'x'), recording::texts().at(0));
}

TEST_F(LogTest, PrintToAdbLineIsCutTo511Characters) {
  log.printToAdb(6, "TAG", "File.cpp", "f", 1, "%s", std::string(600, 'x').c_str());
  EXPECT_EQ(511u, recording::texts().at(0).size());
}

TEST_F(LogTest, FullQueueFilesARequestBeforeTheNextRecord) {
  LogTestPeer::setDeferred(true);
  for (int i = 0; i < 2999; ++i) queueRecord(LogTestPeer::recordDump(), "text");
  ORB_LOGD("number 3000");
  EXPECT_EQ(0u, LogTestPeer::recordDump().queuedRequests());
  ASSERT_EQ(3000u, LogTestPeer::recordDump().queuedRecords());

  ORB_LOGD("number 3001");
  ASSERT_EQ(1u, LogTestPeer::recordDump().queuedRequests());
  EXPECT_EQ(Log::BUFFER_IS_FULL, RecordDumpPeer::takeRequest(LogTestPeer::recordDump()));
  log.printToAdb(3, "ORB", "File.cpp", "f", 1, "number 3002");
  EXPECT_EQ(Log::BUFFER_IS_FULL, RecordDumpPeer::takeRequest(LogTestPeer::recordDump()));
  log.dMapLog(3, "not queued");
  EXPECT_EQ(Log::BUFFER_IS_FULL, RecordDumpPeer::takeRequest(LogTestPeer::recordDump()));
  EXPECT_EQ(3002u, LogTestPeer::recordDump().queuedRecords());
}

TEST_F(LogTest, FullQueueHasOneRequestWaitingAtATime) {
  LogTestPeer::setDeferred(true);
  for (int i = 0; i < 3000; ++i) queueRecord(LogTestPeer::recordDump(), "text");
  log.addDumpRequest(Log::USER_COMMAND);
  for (int i = 0; i < 1000; ++i) {
    ORB_LOGD("text");
    log.printToAdb(3, "ORB", "File.cpp", "f", 1, "text");
    log.dMapLog(3, "text");
  }
  ASSERT_EQ(2u, LogTestPeer::recordDump().queuedRequests());
  EXPECT_EQ(Log::USER_COMMAND, RecordDumpPeer::takeRequest(LogTestPeer::recordDump()));
  EXPECT_EQ(Log::BUFFER_IS_FULL, RecordDumpPeer::takeRequest(LogTestPeer::recordDump()));
}

TEST_F(LogTest, LinesOfManyThreadsAndTheirRecordsKeepOneOrder) {
  constexpr int kThreads = 4, kLines = 500;
  recording::setDiagListening(true);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([t, this] {
      for (int i = 0; i < kLines; ++i)
        log.addLogRecord(3, "ORB", "File.cpp", "f", i, "thread %d", t);
    });
  }
  for (std::thread& thread : threads) thread.join();
  const std::vector<std::string> texts = recording::texts();
  const std::vector<recording::Packet> packets = recording::packets();
  ASSERT_EQ(size_t{kThreads * kLines}, texts.size());
  ASSERT_EQ(texts.size(), packets.size());
  for (size_t i = 0; i < texts.size(); ++i)
    ASSERT_TRUE(endsWith(packetText(packets[i]), " D ORB : " + texts[i]));
}

TEST_F(LogTest, IntegerPropertyRules) {
  const struct {
    const char* text;
    int value;
  } kCases[] = {
      {"5", 5},
      {"-3", -3},
      {"0x1F", 31},
      {"017", 15},
      {" 7", 7},
      {"12abc", 12},
      {"", 42},
      {"abc", 42},
      {"2147483647", 2147483647},
      {"0x", 0},
      {"2147483648", 42},
      {"99999999999999999999", 42},
      {"-99999999999999999999", 42},
      {"-4294967295", 1},
  };
  for (const auto& c : kCases) {
    recording::setProperty("some.key", c.text);
    EXPECT_EQ(c.value, property_get_int32("some.key", 42)) << c.text;
  }
  EXPECT_EQ(42, property_get_int32("missing.key", 42));
  EXPECT_EQ(42, property_get_int32(nullptr, 42));
}

}  // namespace
