// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// A process may end at any moment and in any way while all services are enabled. It does end, with
// the status that it chose.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "Built.h"
#include "Torture.h"
#include "orbsim/Daemon.h"
#include "process_end.h"

namespace torture {
namespace {

const char* const kOutput = "/tmp/process_end.err";

std::string outputOfChild() {
  std::ifstream file(kOutput);
  std::ostringstream text;
  text << file.rdbuf();
  const std::string all = text.str();
  return all.size() > 4000 ? "..." + all.substr(all.size() - 4000) : all;
}

// Runs a program to its end; returns its status as from waitpid().
int statusOf(const std::vector<std::string>& words) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, kOutput, O_WRONLY | O_CREAT | O_TRUNC,
                                   0600);
  std::vector<char*> arguments;
  for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  pid_t child = 0;
  const int error = posix_spawn(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) return -1;
  int status = -1;
  waitpid(child, &status, 0);
  return status;
}

std::string describe(int status) {
  if (WIFSIGNALED(status)) return std::string("signal ") + strsignal(WTERMSIG(status));
  return "exit status " + std::to_string(WEXITSTATUS(status));
}

class ProcessEnd : public ::testing::TestWithParam<const char*> {
 protected:
  void SetUp() override { ASSERT_TRUE(mDaemon.start()) << mDaemon.error(); }
  void TearDown() override { Watchdog::stop(); }

  void runAll(const std::vector<std::string>& words, const std::string& expected) {
    const uint64_t runs = countOr(10);
    for (uint64_t run = 0; run < runs; ++run) {
      Watchdog::step("run %llu of %s", static_cast<unsigned long long>(run + 1),
                     words.back().c_str());
      const std::string outcome = describe(statusOf(words));
      ASSERT_EQ(expected, outcome) << "run " << run + 1 << '\n' << outputOfChild();
    }
    printf("process end: %llu runs, each: %s\n", static_cast<unsigned long long>(runs),
           expected.c_str());
  }
  static std::string ordinary() { return "exit status " + std::to_string(process_end::kExpected); }
  static orbsim::Options options() {
    orbsim::Options options;
    options.reportInterval = std::chrono::milliseconds(1);
    options.record = false;
    return options;
  }
  orbsim::Daemon mDaemon{options()};
};

TEST_P(ProcessEnd, IsAsChosen) {
  const std::string way = GetParam();
  if (way == "exitInDownOnWorker") mDaemon.setHandshake([](int, uint32_t) { return false; });
  const bool killed = way == "terminated";
  runAll({built(PROCESS_END_PROGRAM), way}, killed ? "signal Terminated" : ordinary());
}

INSTANTIATE_TEST_SUITE_P(
    By, ProcessEnd,
    ::testing::Values("returnFromMain", "returnWhileOthersAsk", "returnWhileOthersComeAndGo",
                      "returnWhileConnecting", "exitOnAThread", "endAtOnce", "endByQuickExit",
                      "terminated", "disableInAtexit", "disableInEarlierStatic", "exitInCriteria",
                      "exitInLceLast", "exitInLceReport", "exitInLleLast", "exitInLleReport",
                      "exitInLliIndication", "exitInStatus", "exitInStatusV2",
                      "exitInDownOnReceiver", "exitInDownOnWorker", "exitInSendFailure",
                      "exitInFailedEnable", "exitInFailedDisable", "forkAndExec"),
    [](const auto& way) { return std::string(way.param); });

class LibraryClosed : public ProcessEnd {};

TEST_F(LibraryClosed, UnderTrafficGoesOnAndEndsAsChosen) {
  runAll({built(PROCESS_DLCLOSE_PROGRAM), built(ORB_LIBRARY)}, ordinary());
}

}  // namespace
}  // namespace torture
