// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// The relay's connections: to an absent or slow daemon, several at a time, and their release.

#include <cerrno>

#include "ComesTo.h"
#include "Descriptors.h"
#include "OrbdSimRelayFixture.h"

namespace orbsimtest {
namespace {

class OrbdSimRelayQueueTest : public OrbdSimRelayTest {
 protected:
  // Makes the daemon's socket anew and connects to it until its queue is full. @p waiting gets the
  // connections, which keep the queue full until the daemon accepts them.
  void fillTheQueue(std::vector<End>& waiting) {
    mListener.close();
    ASSERT_NO_FATAL_FAILURE(listen(0));
    for (;;) {
      End next = connectTo(daemonPath(), SOCK_NONBLOCK);
      if (next.fd() < 0) break;
      waiting.push_back(std::move(next));
    }
    ASSERT_EQ(EAGAIN, errno);
  }
};

TEST_F(OrbdSimRelayTest, WithoutADaemonAConnectionEndsAtOnceAndALaterOneWorks) {
  mListener.close();
  {
    const End client = connectTo(path());
    ASSERT_LE(0, client.fd());
    EXPECT_EQ(Blob{}, client.readToEnd());
  }
  ASSERT_NO_FATAL_FAILURE(listen(16));
  ASSERT_NO_FATAL_FAILURE(connectBoth());
  mClient.send({1});
  EXPECT_EQ((Blob{1}), mDaemon.read(1));
  const std::string head = "connection 1 pid " + std::to_string(::getpid()) + " ";
  EXPECT_EQ((std::vector<std::string>{
                "listening on " + path() + " for the daemon on " + daemonPath(), head + "open",
                head + "no daemon: Connection refused, 0 bytes to the daemon, 0 to the client"}),
            [this] {
              std::vector<std::string> lines = mLog.lines();
              lines.resize(3);
              return lines;
            }());
}

// The kernel does not tell the relay when the queue has space again.
TEST_F(OrbdSimRelayQueueTest, DaemonThatIsSlowToAcceptIsWaitedFor) {
  std::vector<End> waiting;
  ASSERT_NO_FATAL_FAILURE(fillTheQueue(waiting));
  mClient = connectTo(path());
  mClient.send({1, 2, 3});
  for (size_t i = 0; i < waiting.size(); ++i) ASSERT_LE(0, accept().fd());
  mDaemon = accept();
  EXPECT_EQ((Blob{1, 2, 3}), mDaemon.read(3));
}

TEST_F(OrbdSimRelayQueueTest, ClientThatGivesUpWaitingIsForgotten) {
  std::vector<End> waiting;
  ASSERT_NO_FATAL_FAILURE(fillTheQueue(waiting));
  connectTo(path()).close();
  EXPECT_TRUE(comesTo([this] { return mLog.lines().size() >= 3; }));
  EXPECT_NE(std::string::npos,
            mLog.lines().at(2).find("closed by the client before the daemon accepted it"));
}

TEST_F(OrbdSimRelayTest, ConnectionsAreApart) {
  ASSERT_NO_FATAL_FAILURE(connectBoth());
  const End first = std::move(mClient), firstDaemon = std::move(mDaemon);
  ASSERT_NO_FATAL_FAILURE(connectBoth());
  first.send({1});
  mClient.send({2});
  EXPECT_EQ((Blob{1}), firstDaemon.read(1));
  EXPECT_EQ((Blob{2}), mDaemon.read(1));
  mClient.close();
  EXPECT_EQ(Blob{}, mDaemon.readToEnd());
  firstDaemon.send({3});
  EXPECT_EQ((Blob{3}), first.read(1));
}

TEST_F(OrbdSimRelayTest, StopEndsConnectionsAndGivesAllBack) {
  const auto before = openDescriptors();
  ASSERT_NO_FATAL_FAILURE(connectBoth());
  mClient.send({1});
  EXPECT_EQ((Blob{1}), mDaemon.read(1));
  mRelay->stop();
  EXPECT_EQ(Blob{}, mClient.readToEnd());
  EXPECT_EQ(Blob{}, mDaemon.readToEnd());
  EXPECT_FALSE(std::filesystem::exists(path()));
  EXPECT_EQ("stopped", mLog.lines().back());
  mClient.close();
  mDaemon.close();
  // The listener's descriptor is closed, too.
  EXPECT_EQ(before - 1, openDescriptors());
}

TEST_F(OrbdSimRelayTest, WrongPathsAreRefused) {
  RelayOptions options;
  options.socketPath = options.daemonPath = mDirectory + "/same";
  Relay same(options);
  EXPECT_FALSE(same.start());
  EXPECT_EQ("the daemon's socket and the relay's own are the same: " + options.daemonPath,
            same.error());
  options.daemonPath = "";
  Relay none(options);
  EXPECT_FALSE(none.start());
  EXPECT_EQ("a socket needs a path", none.error());
  options.daemonPath = daemonPath();
  options.socketPath = path();
  Relay second(options);
  EXPECT_FALSE(second.start());
  EXPECT_EQ("cannot listen on " + path() + ": somebody listens there already", second.error());
}

}  // namespace
}  // namespace orbsimtest
