// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The process-wide socket tables. Tests run in the order of this file, because the process can be
// registered only once.
#include "ProcessUtils.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdint.h>

#include <stdexcept>
#include <thread>

#include "IpcTestSupport.h"

namespace {

using namespace ipctest;
using Bytes = std::vector<unsigned char>;

constexpr unsigned long kPeer = 1;

class ProcessUtilsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    signal(SIGPIPE, SIG_IGN);
    recording::clear();
  }

  // In the table without a receiver, so that only the test changes the socket.
  static void store(unsigned int sessionId, int fd) {
    const auto globals = getProcessUtilsGlobals();
    const ScopedLock<SharedMutex> lock(globals->mLock);
    globals->mSockets[{kPeer, sessionId}] = std::make_shared<IpcSocket>(fd);
  }

  RecordingHandler mHandler;
};

TEST_F(ProcessUtilsTest, UnregisteredProcessHasNoName) {
  EXPECT_EQ("UNKNOWN", getAssignedProcessName());
  EXPECT_EQ(~0UL, getAssignedProcessId());
  EXPECT_EQ(getProcessUtilsGlobals(), getProcessUtilsGlobals());
}

TEST_F(ProcessUtilsTest, RegProcessTakesDescriptorZero) {
  SocketPair pair;
  ASSERT_EQ(0, dup2(pair.ours, 0));
  close(pair.ours);
  regProcess(42, "first", 3, "unused", 0, mHandler);
  EXPECT_EQ("first", getAssignedProcessName());
  EXPECT_EQ(42u, getAssignedProcessId());
  EXPECT_TRUE(isRegistered(42, 3));
  EXPECT_TRUE(hasLogged(kDebug, "child listening to sock: 0"));
  EXPECT_TRUE(hasLogged(kDebug, "registered: first"));
  const ipcMsg_t frame = {1, 42, 9, 0, 3, 0};
  pair.write(&frame, sizeof frame);
  EXPECT_TRUE(mHandler.waitForFrames(1));
  pair.closePeer();
  ASSERT_TRUE(mHandler.waitForEnd());
  EXPECT_TRUE(isClosed(0));
  ASSERT_EQ(0, open("/dev/null", O_RDONLY));
  EXPECT_EQ((std::vector<std::string>{"session 3", "receiver 0"}), mHandler.calls());
}

TEST_F(ProcessUtilsTest, LaterRegProcessDoesNothing) {
  SocketPair pair;
  regProcess(43, "second", 4, "", pair.ours, mHandler);
  EXPECT_EQ("first", getAssignedProcessName());
  EXPECT_EQ(42u, getAssignedProcessId());
  EXPECT_FALSE(isRegistered(43, 4));
  EXPECT_TRUE(isOpen(pair.ours));
  EXPECT_TRUE(logged().empty());
  close(pair.ours);
}

TEST_F(ProcessUtilsTest, RegisterSocketIgnoresDescriptorZeroAndBelow) {
  EXPECT_FALSE(registerSocket(kPeer, 7, 0, mHandler));
  EXPECT_FALSE(registerSocket(kPeer, 7, -1, mHandler));
  EXPECT_FALSE(isRegistered(kPeer, 7));
  EXPECT_TRUE(isOpen(0));
  EXPECT_EQ((Entries{{kDebug, "id: 0x1, sessionId: 7, sockFd: 0"},
                     {kDebug, "id: 0x1, sessionId: 7, sockFd: -1"}}),
            logged());
}

TEST_F(ProcessUtilsTest, SecondSocketOfAPairIsRefused) {
  SocketPair first;
  SocketPair second;
  RecordingHandler other;
  ASSERT_TRUE(registerSocket(kPeer, 7, first.ours, mHandler));
  EXPECT_FALSE(registerSocket(kPeer, 7, second.ours, other));
  EXPECT_TRUE(hasLogged(kError, "id: 0x1, sessionId: 7 is already registered"));
  EXPECT_TRUE(isOpen(second.ours));
  EXPECT_TRUE(ProcessUtilsWrapper::sendMsg(nullptr, 0, 5, 0, 105, kPeer, 7));
  EXPECT_EQ(48u, first.read(48).size());
  close(second.ours);
  first.closePeer();
  EXPECT_TRUE(mHandler.waitForEnd());
}

TEST_F(ProcessUtilsTest, PairsWithAnotherPeerOrSessionAreTheirOwn) {
  SocketPair pairs[3];
  RecordingHandler handlers[3];
  ASSERT_TRUE(registerSocket(1, 7, pairs[0].ours, handlers[0]));
  ASSERT_TRUE(registerSocket(2, 7, pairs[1].ours, handlers[1]));
  ASSERT_TRUE(registerSocket(1, 8, pairs[2].ours, handlers[2]));
  pairs[0].closePeer();
  ASSERT_TRUE(handlers[0].waitForEnd());
  EXPECT_FALSE(isRegistered(1, 7));
  EXPECT_TRUE(isRegistered(2, 7));
  EXPECT_TRUE(isRegistered(1, 8));
  for (int i = 1; i < 3; ++i) {
    pairs[i].closePeer();
    EXPECT_TRUE(handlers[i].waitForEnd());
  }
}

TEST_F(ProcessUtilsTest, DeregisterForgetsThePairAndLeavesTheSocketOpen) {
  SocketPair pair;
  ASSERT_TRUE(registerSocket(kPeer, 7, pair.ours, mHandler));
  recording::clear();
  deregisterSocket(kPeer, 7);
  EXPECT_FALSE(isRegistered(kPeer, 7));
  EXPECT_TRUE(isOpen(pair.ours));
  Entries ours;
  for (const auto& entry : logged()) {
    if (entry.second.rfind("deregister", 0) == 0) ours.push_back(entry);
  }
  EXPECT_EQ((Entries{{kDebug, "deregisterSocket: ENTER"},
                     {kDebug, "deregister socket debug log"},
                     {kDebug, "deregisterSocket: EXIT"}}),
            ours);
  const ipcMsg_t frame = {1, 105, 5, 0, 7, 0};
  pair.write(&frame, sizeof frame);
  EXPECT_TRUE(mHandler.waitForFrames(1));  // the receiver continues
  pair.closePeer();
  EXPECT_TRUE(mHandler.waitForEnd());
}

TEST_F(ProcessUtilsTest, DeregisterOfAnUnknownPairIsHarmless) {
  deregisterSocket(kPeer, 99);
  EXPECT_EQ(3u, logged().size());
}

TEST_F(ProcessUtilsTest, DeregisterForAnotherSocketKeepsThePair) {
  SocketPair pair;
  ASSERT_TRUE(registerSocket(kPeer, 7, pair.ours, mHandler));
  const UniqueFd other;
  deregisterSocket(kPeer, 7, &other);
  EXPECT_TRUE(isRegistered(kPeer, 7));
  pair.closePeer();
  EXPECT_TRUE(mHandler.waitForEnd());
}

TEST_F(ProcessUtilsTest, SendOfNullIsAnError) {
  EXPECT_FALSE(sendIpc(nullptr));
  EXPECT_EQ((Entries{{kError, "data null"}}), logged());
}

TEST_F(ProcessUtilsTest, SendToAnUnknownPairLogsOnlyThePair) {
  ipcMsg_t frame = {105, 0x1F, 5, 0, 99, 0};
  EXPECT_FALSE(sendIpc(&frame));
  EXPECT_EQ((Entries{{kDebug, "dstProcessId: 0x1f, sessionId: 99"}}), logged());
}

TEST_F(ProcessUtilsTest, SendFailureNamesTheError) {
  SocketPair pair;
  store(7, pair.ours);
  pair.closePeer();
  ipcMsg_t frame = {105, kPeer, 5, 0, 7, 0};
  EXPECT_FALSE(sendIpc(&frame));
  EXPECT_EQ((Entries{{kDebug, "dstProcessId: 0x1, sessionId: 7"},
                     {kDebug, "send: length: 0"},
                     {kError, "send: failure, errno: " + std::to_string(EPIPE) + "(" +
                                  strerror(EPIPE) + ")"}}),
            logged());
  deregisterSocket(kPeer, 7);
  EXPECT_TRUE(isClosed(pair.ours));  // no other thread held it
}

TEST_F(ProcessUtilsTest, PartialSendPassesAsSuccess) {
  SocketPair pair;
  fcntl(pair.ours, F_SETFL, O_NONBLOCK);
  store(7, pair.ours);
  const Bytes payload(16 << 20, 1);
  EXPECT_TRUE(ProcessUtilsWrapper::sendMsg(payload.data(), payload.size(), 5, 0, 105, kPeer, 7));
  deregisterSocket(kPeer, 7);
}

TEST_F(ProcessUtilsTest, FrameOnTheWireIsSixWordsAndThePayload) {
  SocketPair pair;
  store(0x80000001, pair.ours);
  const Bytes payload = {0xAA, 0xBB};
  ASSERT_TRUE(ProcessUtilsWrapper::sendMsg(payload.data(), 2, 0x0102030405060708, -2,
                                           toWire(static_cast<ProcessId>(-5)), kPeer, 0x80000001));
  const Bytes expected = {
      0xFB, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,  // source, widened with its sign
      0x01, 0,    0,    0,    0,    0,    0,    0,     // destination
      0x08, 0x07, 0x06, 0x05, 0x04, 0x03, 0x02, 0x01,  // message
      0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,  // subsystem
      0x01, 0,    0,    0x80, 0,    0,    0,    0,     // session, not widened with a sign
      0x02, 0,    0,    0,    0,    0,    0,    0,     // payload length
      0xAA, 0xBB};
  EXPECT_EQ(expected, pair.read(50));
  EXPECT_TRUE(hasLogged(kDebug, "dstProcessId: 0x1, sessionId: 2147483649"));
  EXPECT_TRUE(hasLogged(kDebug, "send: length: 2"));
  deregisterSocket(kPeer, 0x80000001);
}

TEST_F(ProcessUtilsTest, EmptyPayloadIsTheHeaderAlone) {
  SocketPair pair;
  store(7, pair.ours);
  ASSERT_TRUE(ProcessUtilsWrapper::sendMsg(nullptr, 0, 5, 0, 105, kPeer, 7));
  deregisterSocket(kPeer, 7);  // closes our end
  EXPECT_EQ(48u, pair.read(100).size());
}

TEST_F(ProcessUtilsTest, LengthThatNoBufferCanHaveIsALengthError) {
  const unsigned char byte = 0;
  constexpr unsigned long kLongest = PTRDIFF_MAX;
  for (const unsigned long length : {kLongest - 47, kLongest, 1UL << 63, ~0UL - 47, ~0UL}) {
    try {
      ProcessUtilsWrapper::sendMsg(&byte, length, 5, 0, 105, kPeer, 7);
      ADD_FAILURE() << "no exception for " << length;
    } catch (const std::length_error& error) {
      EXPECT_STREQ("cannot create std::vector larger than max_size()", error.what());
    }
  }
}

TEST_F(ProcessUtilsTest, BlockedSendDoesNotHoldUpRegistration) {
  SocketPair slow;
  store(7, slow.ours);
  const Bytes payload(16 << 20, 1);
  bool sent = false;
  std::thread sender([&] {
    sent = ProcessUtilsWrapper::sendMsg(payload.data(), payload.size(), 5, 0, 105, kPeer, 7);
  });
  ASSERT_TRUE(waitLogged(kDebug, "send: length: " + std::to_string(payload.size())));
  SocketPair other;
  EXPECT_TRUE(registerSocket(kPeer, 8, other.ours, mHandler));
  other.closePeer();
  EXPECT_TRUE(mHandler.waitForEnd());
  deregisterSocket(kPeer, 7);  // the sender still holds the socket
  EXPECT_TRUE(isOpen(slow.ours));
  EXPECT_EQ(payload.size() + 48, slow.read(payload.size() + 48).size());
  sender.join();
  EXPECT_TRUE(sent);
  EXPECT_TRUE(isClosed(slow.ours));
}

TEST_F(ProcessUtilsTest, GlobalsSayWhenTheyGo) {
  { ProcessUtilsGlobals globals; }
  ASSERT_EQ((Entries{{kDebug, "ProcessUtilsGlobals dtor"}}), logged());
  EXPECT_EQ(0u, recording::texts().at(0).rfind("|ORB|ProcessUtils::~ProcessUtilsGlobals:", 0));
}

}  // namespace
