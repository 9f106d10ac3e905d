// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// The three services of the daemon stand-in at the same time.

#include <fcntl.h>
#include <sys/wait.h>

#include <thread>

#include "OrbdSimClient.h"
#include "OrbdSimCourse.h"
#include "QuietThreads.h"

namespace orbsimtest {
namespace {

constexpr int kReports = 30;

// Each function plays one client from its handshake to its last report. They return a result,
// because some run in processes that cannot report to the test directly.
bool hearCapacity(const std::string& path) {
  Client client(path, kLcePid);
  client.handshake();
  client.answerTo(enable(true));
  client.answerTo(criteria(1, {}, 0));
  client.send(action(LceProto::START));
  Course course(1);
  for (int i = 0; i < kReports; ++i) {
    const auto message = parse(client.readFrame());
    const auto& report = message.data().estimation_reports_resp();
    const bool found = course.find([&report](const orbsim::Estimate& estimate) {
      return report.rate() == estimate.link.rate &&
             report.queue_size_ul() == estimate.link.queueSizeUl;
    });
    if (!found) return false;
  }
  return true;
}

bool hearLatency(const std::string& path) {
  using Request = LleProto::ServiceMsg;
  Client client(path, kLlePid);
  client.handshake();
  client.answerTo(enable<Request>(true));
  client.answerTo(lleCriteria(1));
  Course course(1);
  for (int i = 0; i < kReports; ++i) {
    const auto report = parse<Request>(client.readFrame()).data().ind_report_resp();
    const bool found = course.find([&report](const orbsim::Estimate& estimate) {
      return report.ul_latency_estimation() == estimate.latency.ulLatency &&
             report.dl_latency_estimation() == estimate.latency.dlLatency;
    });
    if (!found) return false;
  }
  return true;
}

bool hearInterruptions(const std::string& path) {
  using Request = LliProto::ServiceMsg;
  Client client(path, kLliPid);
  client.handshake();
  client.answerTo(enable<Request>(true));
  client.answerTo(lliRegister(true));
  Course course(1);
  for (int i = 0; i < kReports; ++i) {
    const auto step = serialize(parse<Request>(client.readFrame()).data().lli_ind_resp());
    // A later client gets the next handoff from its entry, and then all phases.
    int tries = 0;
    while (serialize(course.nextPhase()) != step) {
      if (i > 0 || ++tries > 10000) return false;
    }
  }
  return true;
}

using OrbdSimServicesTest = OrbdSimTest;

TEST_F(OrbdSimServicesTest, ClientsOfAllServicesAreServedAtOnce) {
  daemon().setReportInterval(std::chrono::milliseconds(1));
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    for (bool (*hear)(const std::string&) : {hearCapacity, hearLatency, hearInterruptions}) {
      threads.emplace_back([this, hear] { EXPECT_TRUE(hear(path())); });
    }
  }
  for (std::thread& thread : threads) thread.join();
  ASSERT_TRUE(daemon().waitForSessionsClosed(12));
  EXPECT_EQ(4u * (3 + 2 + 2), daemon().totals().frames);
}

TEST_F(OrbdSimServicesTest, ClientProcessesOfAllServicesAreServedAtOnce) {
  daemon().setReportInterval(std::chrono::milliseconds(1));
  // No client connects before all are ready, so that the daemon's threads stay idle.
  int gate[2] = {-1, -1};
  ASSERT_EQ(0, ::pipe2(gate, O_CLOEXEC));
  std::vector<pid_t> children;
  quiet::awaitThreads();
  for (int i = 0; i < 2; ++i) {
    for (bool (*hear)(const std::string&) : {hearCapacity, hearLatency, hearInterruptions}) {
      const pid_t child = ::fork();
      ASSERT_GE(child, 0);
      if (child == 0) {
        ::close(gate[1]);
        char end = 0;
        const bool opened = ::read(gate[0], &end, 1) == 0;
        ::_exit(opened && hear(path()) ? 0 : 1);
      }
      children.push_back(child);
    }
  }
  ::close(gate[0]);
  ::close(gate[1]);
  for (const pid_t child : children) {
    int status = -1;
    EXPECT_EQ(child, ::waitpid(child, &status, 0));
    EXPECT_EQ(0, status);
  }
  ASSERT_TRUE(daemon().waitForSessionsClosed(6));
}

TEST_F(OrbdSimServicesTest, OneConnectionMayCarryAllServices) {
  daemon().setReportInterval(std::chrono::milliseconds(0));
  Client client(path());
  client.handshake();
  EXPECT_EQ(LceProto::SUCCESS, client.answerTo(enable(true)).data().status_msg().status());
  EXPECT_EQ(LleProto::SUCCESS, client.answerTo(lleCriteria(3)).data().status_msg().status());
  EXPECT_EQ(LliProto::SUCCESS, client.answerTo(lliRegister(true)).data().status_msg().status());
  ASSERT_TRUE(daemon().waitForLliState(1, [](const auto& state) { return state.registered; }));
  EXPECT_TRUE(daemon().lceState(1).enabled);
  EXPECT_EQ(3u, daemon().lleState(1).criteria);
  EXPECT_FALSE(daemon().lleState(1).enabled);
  EXPECT_FALSE(daemon().lliState(1).enabled);
}

TEST_F(OrbdSimServicesTest, StatesOfUnknownSessionsAreEmpty) {
  EXPECT_FALSE(daemon().lceState(9).enabled);
  EXPECT_FALSE(daemon().lleState(9).enabled);
  EXPECT_FALSE(daemon().lliState(9).enabled);
}

TEST_F(OrbdSimServicesTest, OneServiceCanBeMutedByItsNumber) {
  daemon().setReportInterval(std::chrono::milliseconds(1));
  daemon().setAutoAnswer(orbsim::kSdkTypeLle, false);
  Client latency(path(), kLlePid);
  latency.handshake();
  latency.send(enable<LleProto::ServiceMsg>(true));
  latency.send(lleCriteria(5));
  ASSERT_TRUE(daemon().waitForLleState(1, [](const auto& state) { return state.criteria == 5; }));
  // The other services send; in this time the muted service would also have sent.
  EXPECT_TRUE(hearCapacity(path()));
  EXPECT_TRUE(hearInterruptions(path()));
  EXPECT_FALSE(latency.hasInput());
  EXPECT_TRUE(daemon().lleState(1).enabled);
  EXPECT_EQ(0u, daemon().lleState(1).reports);
  daemon().setAutoAnswer(orbsim::kSdkTypeLle, true);
  const auto report = parse<LleProto::ServiceMsg>(latency.readFrame());
  EXPECT_EQ(LleProto::IND_REPORT_RESP, report.event_id());
}

TEST_F(OrbdSimServicesTest, MutedInterruptionServiceLeavesTheOthersAlone) {
  daemon().setReportInterval(std::chrono::milliseconds(0));
  daemon().setAutoAnswer(orbsim::kSdkTypeLli, false);
  Client client(path());
  client.handshake();
  client.send(lliRegister(true));
  EXPECT_EQ(LceProto::STATUS_IND, client.answerTo(enable(true)).event_id());
  EXPECT_EQ(LleProto::STATUS_IND, client.answerTo(lleCriteria(1)).event_id());
  EXPECT_TRUE(daemon().lliState(1).registered);
  EXPECT_FALSE(client.hasInput());
}

}  // namespace
}  // namespace orbsimtest
