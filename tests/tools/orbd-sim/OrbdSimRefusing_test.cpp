// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// A daemon stand-in whose socket refuses connections or does not exist, and its return.

#include <cerrno>
#include <thread>
#include <vector>

#include "OrbdSimClient.h"
#include "orbsim/Faults.h"

namespace orbsimtest {
namespace {

TEST_F(OrbdSimTest, RefusedConnectionsFindTheSocketAndSessionsGoOn) {
  Client client(path());
  client.handshake();
  EXPECT_TRUE(daemon().refuseConnections());
  EXPECT_EQ(ECONNREFUSED, Client(path()).error());
  EXPECT_EQ(LceProto::STATUS_IND, client.answerTo(enable(true)).event_id());
  EXPECT_TRUE(daemon().reappear());
  EXPECT_TRUE(Client(path()).connected());
}

TEST_F(OrbdSimTest, FaultRefuseIsAConnectionRefused) {
  orbsim::Faults faults;
  std::string error;
  ASSERT_TRUE(faults.parse("refuse", error)) << error;
  faults.apply(daemon());
  EXPECT_EQ(ECONNREFUSED, Client(path()).error());
  daemon().stop();
  EXPECT_FALSE(std::filesystem::exists(path()));
}

TEST_F(OrbdSimTest, SocketThatRefusesCanBeMadeWhereNoneIs) {
  daemon().vanish();
  EXPECT_EQ(ENOENT, Client(path()).error());
  EXPECT_TRUE(daemon().refuseConnections());
  EXPECT_EQ(ECONNREFUSED, Client(path()).error());
  daemon().vanish();
  EXPECT_EQ(ENOENT, Client(path()).error());
  EXPECT_TRUE(daemon().reappear());
  EXPECT_TRUE(Client(path()).connected());
}

TEST_F(OrbdSimTest, SocketThatSomebodyElseHasTakenStays) {
  EXPECT_TRUE(daemon().refuseConnections());
  Options options;
  options.socketPath = path();
  Daemon other(options);
  ASSERT_TRUE(other.start()) << other.error();
  EXPECT_FALSE(daemon().reappear());
  daemon().stop();
  EXPECT_TRUE(Client(path()).connected());
}

TEST_F(OrbdSimTest, DaemonThatHasStoppedMakesNoSocket) {
  daemon().stop();
  EXPECT_TRUE(daemon().refuseConnections());
  EXPECT_TRUE(daemon().reappear());
  EXPECT_EQ(ENOENT, Client(path()).error());
}

TEST_F(OrbdSimTest, WhoeverBringsItBackFindsItBack) {
  for (int i = 0; i < 50; ++i) {
    daemon().vanish();
    std::vector<std::thread> all;
    for (int k = 0; k < 4; ++k) all.emplace_back([this] { EXPECT_TRUE(daemon().reappear()); });
    for (std::thread& each : all) each.join();
    EXPECT_TRUE(Client(path()).connected());
  }
}

TEST_F(OrbdSimTest, WhoBringsItBackWhileItStopsLeavesNothing) {
  for (int i = 0; i < 50; ++i) {
    daemon().vanish();
    std::thread other([this] { daemon().reappear(); });
    daemon().stop();
    other.join();
    EXPECT_EQ(ENOENT, Client(path()).error());
    ASSERT_TRUE(daemon().start()) << daemon().error();
  }
}

}  // namespace
}  // namespace orbsimtest
