// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// Children that a process forks while its threads log, in every mode of the log. Each child may log
// and ends normally, whatever locks were held at the fork, and does not change the parent's files.
// ORB_TORTURE_COUNT is the number of children in each mode.
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "LogEncryptionFixture.h"
#include "NullPlatform.h"

namespace logtest {
namespace {

constexpr int kExpected = 7;
constexpr size_t kConfigHead = 9;
constexpr unsigned kPatience = 20;  // seconds, for operations that take almost no time
constexpr int kHungAtMost = 3;      // after this number, waiting for more is useless

struct Mode {
  const char* name;
  const char* logging;
  bool listening;
  bool encrypted;
};
const Mode kModes[] = {{"Plain", "", false, false},
                       {"Diagnosed", "", true, false},
                       {"Deferred", "1", true, false},
                       {"Encrypted", "", false, true},
                       {"Everything", "1", true, true}};

int children() {
  const char* const text = std::getenv("ORB_TORTURE_COUNT");
  return text != nullptr ? std::atoi(text) : 100;
}

void say(const char* text) {
  Log::getInstance()->addLogRecord(4, "T", "File.cpp", "f", 1, "%s", text);
}

// One call of each kind. It must not wait for a thread or for a lock that another thread may have
// held.
void sayAll(const char* text) {
  Log* const log = Log::getInstance();
  say(text);
  log->printToAdb(4, "T", "File.cpp", "f", 1, "%s", text);
  log->dMapLog(4, text);
  log->logModuleDebug("%s", text);
  log->printVersion();
  log->addDumpRequest(Log::USER_COMMAND);
}

// Whether a child forked now ends normally.
bool childEnds() {
  const pid_t child = fork();
  if (child == 0) {
    alarm(kPatience);
    sayAll("child");
    std::exit(kExpected);
  }
  int status = -1;
  return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) &&
         WEXITSTATUS(status) == kExpected;
}

// An application in a separate process, because a log is set up once. The result is the number of
// children that did not end.
[[noreturn]] void runApplication(const Mode& mode) {
  nullplatform::setLogging(mode.logging);
  nullplatform::setListening(mode.listening);
  Log* const log = Log::getInstance();
  log->init("orb");
  for (int i = 0; i < 3; ++i) {
    std::thread([] {
      for (;;) sayAll("parent");
    }).detach();
  }
  int hung = 0;
  const int count = children();
  int forked = 0;
  for (; forked < count && hung < kHungAtMost; ++forked) hung += childEnds() ? 0 : 1;
  std::printf("%s: %d of %d children hung\n", mode.name, hung, forked);
  std::fflush(stdout);
  _exit(hung);
}

class LogFork : public testing::TestWithParam<Mode> {
 protected:
  LogFork() {
    fs::remove_all("/data/vendor/orb_logs");
    for (const char* name : {"main", "other", "config"})
      fs::create_directories(fs::path("/data/vendor/orb_logs") / name);
  }
};

TEST_P(LogFork, ChildrenLogAndEndWhileThreadsLog) {
  if (GetParam().encrypted) {
    // The minimum numbers of records per file and of files.
    logtest::write(kConfig, std::string(kConfigHead, '\0') + testkeys::rsaKey(2048).publicPem);
  }
  std::fflush(nullptr);
  const pid_t application = fork();
  ASSERT_NE(-1, application);
  if (application == 0) runApplication(GetParam());
  int status = -1;
  ASSERT_EQ(application, waitpid(application, &status, 0));
  ASSERT_TRUE(WIFEXITED(status)) << status;
  EXPECT_EQ(0, WEXITSTATUS(status));
  // The files contain only the parent's lines.
  size_t records = 0;
  for (const std::string& name : namesIn(kMain)) {
    Bytes content = contentOf(fs::path(kMain) / name);
    if (content.size() < kHeaderSize) continue;  // just begun
    content.resize(endOfRecords(content));       // the last one may be cut by the process's end
    const Bytes key = sessionKeyOf(content, testkeys::rsaKey(2048));
    const Texts messages = messagesOf(linesOf(recordsOf(content), key));
    EXPECT_EQ(Texts(messages.size(), "parent"), messages) << name;
    records += messages.size();
  }
  EXPECT_EQ(GetParam().encrypted, records > 0);
}

INSTANTIATE_TEST_SUITE_P(In, LogFork, testing::ValuesIn(kModes),
                         [](const auto& mode) { return mode.param.name; });

}  // namespace
}  // namespace logtest
