// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// The relay between an application's socket and a daemon's: what goes in comes out, whatever it is,
// and each side sees the other come to its end.

#include <fcntl.h>
#include <sys/time.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <random>
#include <thread>

#include "ComesTo.h"
#include "Descriptors.h"
#include "OrbdSimClient.h"
#include "orbsim/Relay.h"

namespace orbsimtest {
namespace {

using orbsim::Direction;
using orbsim::RecordedEvent;
using orbsim::Relay;
using orbsim::RelayOptions;

Blob randomBytes(size_t size) {
  std::mt19937 random(static_cast<uint32_t>(size));
  Blob bytes(size);
  for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random());
  return bytes;
}

// One end of a connection, with calls that block.
class End {
 public:
  explicit End(int fd = -1) : mFd(fd) {}
  End(End&& other) noexcept : mFd(std::exchange(other.mFd, -1)) {}
  End& operator=(End&& other) noexcept {
    close();
    mFd = std::exchange(other.mFd, -1);
    return *this;
  }
  ~End() { close(); }

  int fd() const { return mFd; }
  void close() {
    if (mFd >= 0) ::close(mFd);
    mFd = -1;
  }
  void shutdown(int how) const { ASSERT_EQ(0, ::shutdown(mFd, how)); }
  // How much of it was taken.
  size_t send(const Blob& bytes, size_t piece = 100000) const {
    size_t sent = 0;
    while (sent < bytes.size()) {
      const size_t size = std::min(piece, bytes.size() - sent);
      const ssize_t result = ::send(mFd, bytes.data() + sent, size, MSG_NOSIGNAL);
      if (result < 0) break;
      sent += static_cast<size_t>(result);
    }
    return sent;
  }
  Blob read(size_t size) const {
    Blob bytes(size);
    const ssize_t got = ::recv(mFd, bytes.data(), size, MSG_WAITALL);
    bytes.resize(got > 0 ? static_cast<size_t>(got) : 0);
    return bytes;
  }
  Blob readToEnd() const {
    Blob all, part;
    while (!(part = read(4096)).empty()) all.insert(all.end(), part.begin(), part.end());
    return all;
  }

 private:
  int mFd;
};

sockaddr_un addressOf(const std::string& path) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
  return address;
}

End connectTo(const std::string& path, int flags = 0) {
  End end(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | flags, 0));
  const sockaddr_un address = addressOf(path);
  if (::connect(end.fd(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0)
    end.close();
  return end;
}

class OrbdSimRelayTest : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/orbd-sim-test-XXXXXX";
    ASSERT_NE(nullptr, ::mkdtemp(pattern));
    mDirectory = pattern;
    listen(16);
    startRelay();
  }
  void TearDown() override {
    mRelay.reset();
    std::filesystem::remove_all(mDirectory);
  }

  std::string daemonPath() const { return mDirectory + "/daemon"; }
  std::string path() const { return mDirectory + "/orb"; }

  void listen(int backlog) {
    std::filesystem::remove(daemonPath());
    mListener = End(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const sockaddr_un address = addressOf(daemonPath());
    ASSERT_EQ(0,
              ::bind(mListener.fd(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)));
    ASSERT_EQ(0, ::listen(mListener.fd(), backlog));
  }
  void startRelay() {
    mRelay.reset();
    RelayOptions options;
    options.socketPath = path();
    options.daemonPath = daemonPath();
    options.log = mLog.sink();
    options.trace = [this](const orbsim::TraceItem& item) { mTrace.sink()(traceText(item)); };
    options.record = [this](const RecordedEvent& event) {
      std::lock_guard<std::mutex> lock(mLock);
      mEvents.push_back(event);
    };
    mRelay = std::make_unique<Relay>(options);
    ASSERT_TRUE(mRelay->start()) << mRelay->error();
  }
  End accept() const { return End(::accept4(mListener.fd(), nullptr, nullptr, SOCK_CLOEXEC)); }
  void connectBoth() {
    mClient = connectTo(path());
    ASSERT_LE(0, mClient.fd());
    mDaemon = accept();
    ASSERT_LE(0, mDaemon.fd());
  }
  Blob recorded(Direction direction) {
    std::lock_guard<std::mutex> lock(mLock);
    Blob all;
    for (const RecordedEvent& event : mEvents) {
      if (event.kind == RecordedEvent::Kind::kBytes && event.direction == direction)
        all.insert(all.end(), event.bytes.begin(), event.bytes.end());
    }
    return all;
  }

  std::string mDirectory;
  LogLines mLog;
  LogLines mTrace;
  std::mutex mLock;
  std::vector<RecordedEvent> mEvents;
  End mListener, mClient, mDaemon;
  std::unique_ptr<Relay> mRelay;
};

// Bytes that mean nothing, and more than any buffer on the way holds, both ways at once.
TEST_F(OrbdSimRelayTest, BytesPassUnchangedInBothDirections) {
  ASSERT_NO_FATAL_FAILURE(connectBoth());
  const Blob up = randomBytes(3000001), down = randomBytes(2000003);
  std::thread client([&] {
    EXPECT_EQ(up.size(), mClient.send(up, 99991));
    mClient.shutdown(SHUT_WR);
  });
  std::thread daemon([&] {
    EXPECT_EQ(down.size(), mDaemon.send(down, 12345));
    mDaemon.shutdown(SHUT_WR);
  });
  Blob gotDown;
  std::thread reader([&] { gotDown = mClient.readToEnd(); });
  const Blob gotUp = mDaemon.readToEnd();
  client.join();
  daemon.join();
  reader.join();
  EXPECT_TRUE(up == gotUp);
  EXPECT_TRUE(down == gotDown);
  mRelay->stop();
  EXPECT_TRUE(up == recorded(Direction::kToDaemon));
  EXPECT_TRUE(down == recorded(Direction::kToClient));
  EXPECT_FALSE(mTrace.lines().empty());
}

TEST_F(OrbdSimRelayTest, SideThatDoesNotReadHoldsTheOtherUp) {
  ASSERT_NO_FATAL_FAILURE(connectBoth());
  // A socket that takes nothing for so long is taken for full; when that is wrong, less is sent.
  const timeval limit = {0, 300000};
  ASSERT_EQ(0, ::setsockopt(mClient.fd(), SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof(limit)));
  const Blob bytes = randomBytes(16 << 20);
  const size_t taken = mClient.send(bytes);
  EXPECT_LT(taken, size_t{4} << 20);
  mClient.shutdown(SHUT_WR);
  const Blob got = mDaemon.readToEnd();
  ASSERT_EQ(taken, got.size());
  EXPECT_TRUE(std::equal(got.begin(), got.end(), bytes.begin()));
}

TEST_F(OrbdSimRelayTest, ClientThatSaysNoMoreStillHears) {
  ASSERT_NO_FATAL_FAILURE(connectBoth());
  mClient.send({1, 2, 3});
  mClient.shutdown(SHUT_WR);
  EXPECT_EQ((Blob{1, 2, 3}), mDaemon.readToEnd());
  mDaemon.send({4, 5});
  EXPECT_EQ((Blob{4, 5}), mClient.read(2));
  mDaemon.close();
  EXPECT_EQ(Blob{}, mClient.readToEnd());
}

TEST_F(OrbdSimRelayTest, DaemonThatSaysNoMoreStillHears) {
  ASSERT_NO_FATAL_FAILURE(connectBoth());
  mDaemon.send({4, 5});
  mDaemon.shutdown(SHUT_WR);
  EXPECT_EQ((Blob{4, 5}), mClient.readToEnd());
  mClient.send({1, 2, 3});
  EXPECT_EQ((Blob{1, 2, 3}), mDaemon.read(3));
}

TEST_F(OrbdSimRelayTest, WhatADaemonSaidBeforeItWentArrives) {
  ASSERT_NO_FATAL_FAILURE(connectBoth());
  const Blob last = randomBytes(150000);
  mDaemon.send(last);
  mDaemon.close();
  EXPECT_TRUE(last == mClient.readToEnd());
  // And then nobody takes anything, as without the relay.
  const Blob more(1000, 0);
  while (mClient.send(more) == more.size()) {
  }
  EXPECT_EQ(EPIPE, errno);
}

TEST_F(OrbdSimRelayTest, WhatAClientSaidBeforeItWentArrives) {
  ASSERT_NO_FATAL_FAILURE(connectBoth());
  const Blob last = randomBytes(150000);
  mClient.send(last);
  mClient.close();
  EXPECT_TRUE(last == mDaemon.readToEnd());
  const Blob more(1000, 0);
  while (mDaemon.send(more) == more.size()) {
  }
  EXPECT_EQ(EPIPE, errno);
}

TEST_F(OrbdSimRelayTest, DaemonThatTakesNothingMoreIsSeenByTheClient) {
  ASSERT_NO_FATAL_FAILURE(connectBoth());
  mDaemon.shutdown(SHUT_RD);
  const Blob more(1000, 0);
  while (mClient.send(more) == more.size()) {
  }
  EXPECT_EQ(EPIPE, errno);
  mDaemon.send({7});
  EXPECT_EQ((Blob{7}), mClient.read(1));
}

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

// The kernel tells nobody when there is room for one more.
TEST_F(OrbdSimRelayTest, DaemonThatIsSlowToAcceptIsWaitedFor) {
  mListener.close();
  ASSERT_NO_FATAL_FAILURE(listen(0));
  std::vector<End> crowd;
  for (;;) {
    End other = connectTo(daemonPath(), SOCK_NONBLOCK);
    if (other.fd() < 0) break;
    crowd.push_back(std::move(other));
  }
  ASSERT_EQ(EAGAIN, errno);
  mClient = connectTo(path());
  mClient.send({1, 2, 3});
  for (size_t i = 0; i < crowd.size(); ++i) ASSERT_LE(0, accept().fd());
  mDaemon = accept();
  EXPECT_EQ((Blob{1, 2, 3}), mDaemon.read(3));
}

TEST_F(OrbdSimRelayTest, ClientThatGivesUpWaitingIsForgotten) {
  mListener.close();
  ASSERT_NO_FATAL_FAILURE(listen(0));
  std::vector<End> crowd;
  for (;;) {
    End other = connectTo(daemonPath(), SOCK_NONBLOCK);
    if (other.fd() < 0) break;
    crowd.push_back(std::move(other));
  }
  connectTo(path()).close();
  EXPECT_TRUE(comesTo([this] { return mLog.lines().size() >= 3; }));
  EXPECT_NE(std::string::npos, mLog.lines().at(2).find("left before the daemon took it"));
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
  // The listener's is gone, too.
  EXPECT_EQ(before - 1, openDescriptors());
}

TEST_F(OrbdSimRelayTest, RecordingIsInOrderAndSaysWhoAndWhen) {
  ASSERT_NO_FATAL_FAILURE(connectBoth());
  mDaemon.send({1});
  mClient.read(1);
  mClient.send({2, 3});
  mDaemon.read(2);
  mDaemon.close();
  mClient.readToEnd();
  mRelay->stop();
  using Kind = RecordedEvent::Kind;
  std::vector<Kind> kinds;
  std::chrono::microseconds last{0};
  for (const RecordedEvent& event : mEvents) {
    kinds.push_back(event.kind);
    EXPECT_EQ(1u, event.connection);
    EXPECT_EQ(::getpid(), event.process);
    EXPECT_LE(last, event.time);
    last = event.time;
  }
  EXPECT_EQ((std::vector<Kind>{Kind::kOpen, Kind::kBytes, Kind::kBytes, Kind::kEnd, Kind::kClosed}),
            kinds);
  EXPECT_EQ((Blob{1}), mEvents.at(1).bytes);
  EXPECT_EQ(Direction::kToClient, mEvents.at(1).direction);
  EXPECT_EQ((Blob{2, 3}), mEvents.at(2).bytes);
  EXPECT_EQ(Direction::kToDaemon, mEvents.at(2).direction);
  EXPECT_EQ(Direction::kToClient, mEvents.at(3).direction);
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

// A session of the protocol, seen from both ends and in the trace.
TEST_F(OrbdSimRelayTest, SessionIsTracedAndServed) {
  mListener.close();
  std::filesystem::remove(daemonPath());
  Options options;
  options.socketPath = daemonPath();
  Daemon daemon(options);
  daemon.setNextSessionId(42);
  ASSERT_TRUE(daemon.start()) << daemon.error();
  {
    Client client(path());
    client.handshake();
    EXPECT_EQ(42u, client.sessionId());
    client.answerTo(enable(true));
    const Blob large = randomBytes(5 << 20);
    client.sendPayload(large, 77);
    orbsim::Frame found;
    ASSERT_TRUE(daemon.waitForFrames(2));
    EXPECT_TRUE(large == daemon.frames().at(1).payload);
  }
  ASSERT_TRUE(daemon.waitForConnectionsClosed(1));
  mRelay->stop();
  std::vector<std::string> lines = mTrace.lines();
  for (std::string& line : lines) line = line.substr(line.find(" session ") + 1);
  EXPECT_EQ((std::vector<std::string>{
                "session 42 handshake init", "session 42 handshake response",
                "session 42 handshake complete",
                "session 42 message 5 LCE ServiceMsg event_id: ENABLE transaction_id: 0 data { "
                "enable_msg { enable: true } }",
                "session 42 message 5 LCE ClientMsg event_id: STATUS_IND transaction_id: 0 data { "
                "status_msg { status: SUCCESS } }",
                "session 42 message 77 not decoded (too long to be decoded): (5242880 bytes)"}),
            lines);
}

}  // namespace
}  // namespace orbsimtest
