// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Receiver threads at one end of a socket pair; the test plays the peer.
#include "IpcReceiver.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <sys/eventfd.h>

#include <cstdlib>
#include <stdexcept>
#include <thread>

#include "IpcTestSupport.h"

// By default the sanitizers' allocators end the process on failure; here they must return null.
extern "C" {
const char* __asan_default_options();
const char* __tsan_default_options();
const char* __asan_default_options() { return "allocator_may_return_null=1"; }
const char* __tsan_default_options() { return "allocator_may_return_null=1"; }
}

namespace {

using namespace ipctest;
using Bytes = std::vector<unsigned char>;
using Calls = std::vector<std::string>;

constexpr unsigned long kPeer = 1;

std::string receiverEnd(int fd) { return "receiver " + std::to_string(fd); }

ipcMsg_t header(uint64_t payloadLength) { return {1, 105, 5, -2, 7, payloadLength}; }

// In the child of a death test, because only the child knows what the platform log got.
void showSystemLines() {
  for (const auto& line : recording::lines()) {
    if (line.text == "malloc failed" && !line.hasTag) {
      fprintf(stderr, "level %d: %s\n", line.priority, line.text.c_str());
    }
  }
}

void receiveFrameOfLength(uint64_t payloadLength) {
  std::atexit(showSystemLines);
  SocketPair pair;
  const ipcMsg_t frame = header(payloadLength);
  pair.write(&frame, sizeof frame);
  RecordingHandler handler;
  ipcReceiver(pair.ours, handler);
}

// The first test of the program, so that the children inherit no locks of receiver threads.
TEST(IpcReceiverDeathTest, LengthThatOverflowsTheFrameEndsTheProcess) {
  EXPECT_EXIT(receiveFrameOfLength(~uint64_t{0}), ::testing::ExitedWithCode(255),
              "level 6: malloc failed");
  EXPECT_EXIT(receiveFrameOfLength(~uint64_t{0} - 47), ::testing::ExitedWithCode(255),
              "level 6: malloc failed");
}

TEST(IpcReceiverDeathTest, LengthThatTheAllocatorRefusesEndsTheProcess) {
  EXPECT_EXIT(receiveFrameOfLength(uint64_t{1} << 62), ::testing::ExitedWithCode(255),
              "level 6: malloc failed");
}

class IpcReceiverTest : public ::testing::Test {
 protected:
  void SetUp() override { recording::clear(); }

  void start(unsigned int sessionId) {
    mOurs = mPair.ours;
    ASSERT_TRUE(registerSocket(kPeer, sessionId, mPair.ours, mHandler));
  }
  void sendFrame(const ipcMsg_t& frame, const Bytes& payload = {}) {
    mPair.write(&frame, sizeof frame);
    if (!payload.empty()) mPair.write(payload.data(), payload.size());
  }
  void expectEnded(unsigned int sessionId) {
    ASSERT_TRUE(mHandler.waitForEnd());
    EXPECT_TRUE(isClosed(mOurs));
    EXPECT_FALSE(isRegistered(kPeer, sessionId));
    EXPECT_FALSE(mHandler.threadSemaphore()->decreaseFor(std::chrono::milliseconds(0)));
  }

  SocketPair mPair;
  RecordingHandler mHandler;
  int mOurs = -1;
};

TEST_F(IpcReceiverTest, FrameArrivesWithHeaderAndPayload) {
  start(7);
  sendFrame(header(3), {9, 8, 7});
  ASSERT_TRUE(mHandler.waitForFrames(1));
  const auto frame = mHandler.frames().at(0);
  EXPECT_EQ(1u, frame.header.srcProcessId);
  EXPECT_EQ(105u, frame.header.dstProcessId);
  EXPECT_EQ(5u, frame.header.msgId);
  EXPECT_EQ(-2, frame.header.subsystemId);
  EXPECT_EQ(7u, frame.header.sessionId);
  EXPECT_EQ((Bytes{9, 8, 7}), frame.payload);
  mPair.closePeer();
  expectEnded(7);
  EXPECT_TRUE(hasLogged(kDebug, "recv: len: 48"));
  EXPECT_TRUE(hasLogged(kDebug, "Received data size: 3"));
  EXPECT_TRUE(hasLogged(kDebug, "recv: length: 3"));
}

TEST_F(IpcReceiverTest, EmptyPayloadIsDeliveredWithoutASecondReceive) {
  start(7);
  sendFrame(header(0));
  ASSERT_TRUE(mHandler.waitForFrames(1));  // the peer sent nothing that another receive could read
  EXPECT_TRUE(mHandler.frames().at(0).payload.empty());
  mPair.closePeer();
  expectEnded(7);
  EXPECT_TRUE(hasLogged(kDebug, "Received data size: 0"));
  EXPECT_TRUE(hasLogged(kDebug, "recv: length: 0"));
}

TEST_F(IpcReceiverTest, FrameInPiecesIsPutTogether) {
  start(7);
  const ipcMsg_t frame = header(2);
  mPair.write(&frame, 10);
  mPair.write(reinterpret_cast<const char*>(&frame) + 10, sizeof frame - 10);
  mPair.write("a", 1);
  mPair.write("b", 1);
  ASSERT_TRUE(mHandler.waitForFrames(1));
  EXPECT_EQ((Bytes{'a', 'b'}), mHandler.frames().at(0).payload);
  mPair.closePeer();
  expectEnded(7);
}

TEST_F(IpcReceiverTest, FramesInOneWriteAreTakenApart) {
  start(7);
  Bytes bytes;
  for (int i = 0; i < 3; ++i) {
    ipcMsg_t frame = header(1);
    frame.msgId = static_cast<uint64_t>(i);
    const auto* raw = reinterpret_cast<const unsigned char*>(&frame);
    bytes.insert(bytes.end(), raw, raw + sizeof frame);
    bytes.push_back(static_cast<unsigned char>(i));
  }
  mPair.write(bytes.data(), bytes.size());
  ASSERT_TRUE(mHandler.waitForFrames(3));
  for (unsigned char i = 0; i < 3; ++i) {
    EXPECT_EQ(i, mHandler.frames()[i].header.msgId);
    EXPECT_EQ(Bytes{i}, mHandler.frames()[i].payload);
  }
  mPair.closePeer();
  expectEnded(7);
}

TEST_F(IpcReceiverTest, ShortHeaderReadsAsZeroBehindItsEnd) {
  start(7);
  const uint64_t source = 77;
  mPair.write(&source, sizeof source);
  mPair.closePeer();
  expectEnded(7);
  ASSERT_EQ(1u, mHandler.frames().size());
  const auto frame = mHandler.frames().at(0);
  EXPECT_EQ(77u, frame.header.srcProcessId);
  EXPECT_EQ(0u, frame.header.dstProcessId);
  EXPECT_EQ(0u, frame.header.msgId);
  EXPECT_EQ(0, frame.header.subsystemId);
  EXPECT_EQ(0u, frame.header.sessionId);
  EXPECT_EQ(0u, frame.header.payloadLength);
  EXPECT_TRUE(hasLogged(kDebug, "recv: len: 8"));
}

TEST_F(IpcReceiverTest, PeerCloseEndsTheSession) {
  start(7);
  recording::clear();
  mPair.closePeer();
  expectEnded(7);
  EXPECT_EQ((Calls{"session 7", receiverEnd(mOurs)}), mHandler.calls());
  const Entries entries = logged();
  ASSERT_EQ(5u, entries.size());
  EXPECT_EQ(Entry(kDebug, "recv: len: 0"), entries[0]);
  EXPECT_EQ(Entry(kError, "Error 1st recv"), entries[1]);
  EXPECT_EQ(kDebug, entries[2].first);
  EXPECT_EQ(0u, entries[2].second.rfind("ipc recv error: ", 0)) << entries[2].second;
  EXPECT_NE(std::string::npos, entries[2].second.find(" for socket " + std::to_string(mOurs)));
  EXPECT_EQ(Entry(kDebug, "Cleaning up session 7, socket " + std::to_string(mOurs)), entries[3]);
  EXPECT_EQ(Entry(kDebug, "Notifying session 7"), entries[4]);
}

TEST_F(IpcReceiverTest, LinesAreTheReceiversAsAWhole) {
  start(7);
  mPair.closePeer();
  expectEnded(7);
  const std::vector<std::string> receiver = {"ProcessUtils::ipcReceiver"};
  EXPECT_EQ(receiver, sourcesOf("recv: len: 0"));
  EXPECT_EQ(receiver, sourcesOf("Error 1st recv"));
  EXPECT_EQ(receiver, sourcesOf("Notifying session 7"));
  EXPECT_EQ(receiver, sourcesOf("Cleaning up session 7, socket " + std::to_string(mOurs)));
}

TEST_F(IpcReceiverTest, LargestSessionIdIsReportedUnsigned) {
  start(0xFFFFFFFF);
  mPair.closePeer();
  expectEnded(0xFFFFFFFF);
  EXPECT_EQ((Calls{"session 4294967295", receiverEnd(mOurs)}), mHandler.calls());
  EXPECT_TRUE(hasLogged(kDebug, "Notifying session -1"));
}

TEST_F(IpcReceiverTest, SessionZeroHearsOnlyThatTheReceiverEnded) {
  start(0);
  mPair.closePeer();
  expectEnded(0);
  EXPECT_EQ((Calls{receiverEnd(mOurs)}), mHandler.calls());
  EXPECT_TRUE(hasLogged(kDebug, "Cleaning up session 0, socket " + std::to_string(mOurs)));
  EXPECT_TRUE(hasLogged(kDebug, "Notifying session 0"));
}

TEST_F(IpcReceiverTest, DeregisteredSocketEndsWithoutSessionEnd) {
  start(7);
  deregisterSocket(kPeer, 7);
  EXPECT_TRUE(isOpen(mOurs));
  mPair.closePeer();
  expectEnded(7);
  EXPECT_EQ((Calls{receiverEnd(mOurs)}), mHandler.calls());
  EXPECT_TRUE(hasLogged(kDebug, "Notifying session 0"));
  EXPECT_FALSE(hasLogged(kDebug, "Cleaning up session 7, socket " + std::to_string(mOurs)));
}

TEST_F(IpcReceiverTest, PayloadCutShortEndsTheSession) {
  start(7);
  sendFrame(header(10), {1, 2, 3});
  mPair.closePeer();
  expectEnded(7);
  EXPECT_TRUE(hasLogged(kError, "Unexpected data received: expected size: 10, received size: 3"));
  EXPECT_TRUE(mHandler.frames().empty());
  EXPECT_EQ((Calls{"session 7", receiverEnd(mOurs)}), mHandler.calls());
}

TEST_F(IpcReceiverTest, MissingPayloadEndsTheSession) {
  start(7);
  sendFrame(header(10));
  mPair.closePeer();
  expectEnded(7);
  EXPECT_TRUE(hasLogged(kError, "Unexpected data received: expected size: 10, received size: 0"));
  EXPECT_TRUE(mHandler.frames().empty());
}

TEST_F(IpcReceiverTest, SecondReceiveErrorEndsTheSession) {
  // The header has arrived; the rest has not, and the socket does not wait for it.
  sendFrame(header(10));
  fcntl(mPair.ours, F_SETFL, O_NONBLOCK);
  start(7);
  expectEnded(7);
  EXPECT_TRUE(hasLogged(
      kError, "Error 2nd recv: errno: " + std::to_string(EAGAIN) + "(" + strerror(EAGAIN) + ")"));
  EXPECT_TRUE(hasLogged(kDebug, "ipc recv error: " + std::to_string(EAGAIN) + " for socket " +
                                    std::to_string(mOurs)));
  EXPECT_TRUE(mHandler.frames().empty());
  EXPECT_EQ((Calls{"session 7", receiverEnd(mOurs)}), mHandler.calls());
}

TEST_F(IpcReceiverTest, FirstReceiveErrorEndsTheSession) {
  const int fd = eventfd(0, EFD_CLOEXEC);
  ASSERT_TRUE(registerSocket(kPeer, 8, fd, mHandler));
  ASSERT_TRUE(mHandler.waitForEnd());
  EXPECT_TRUE(isClosed(fd));
  EXPECT_TRUE(hasLogged(kDebug, "recv: len: -1"));
  EXPECT_TRUE(hasLogged(kError, "Error 1st recv"));
  EXPECT_TRUE(hasLogged(
      kDebug, "ipc recv error: " + std::to_string(ENOTSOCK) + " for socket " + std::to_string(fd)));
  EXPECT_EQ((Calls{"session 8", receiverEnd(fd)}), mHandler.calls());
  close(mPair.ours);
}

TEST_F(IpcReceiverTest, RunsOnTheCallersThreadWhenCalledDirectly) {
  sendFrame(header(1), {4});
  mPair.closePeer();
  ipcReceiver(mPair.ours, mHandler);
  EXPECT_EQ(1u, mHandler.frames().size());
  EXPECT_TRUE(isClosed(mPair.ours));
  EXPECT_TRUE(mHandler.threadSemaphore()->decreaseFor(std::chrono::milliseconds(0)));
  EXPECT_FALSE(isReceiverThreadOf(mHandler.threadSemaphore().get()));  // it no longer is
}

TEST_F(IpcReceiverTest, ThrowingHandlerEndsItsConnectionOnly) {
  struct Throwing : RecordingHandler {
    void handleMsg(ipcMsg_t*) override { throw std::runtime_error("no"); }
  } handler;
  mOurs = mPair.ours;
  ASSERT_TRUE(registerSocket(kPeer, 7, mPair.ours, handler));
  sendFrame(header(0));
  ASSERT_TRUE(handler.waitForEnd());
  EXPECT_TRUE(isClosed(mOurs));
  EXPECT_FALSE(isRegistered(kPeer, 7));
  EXPECT_EQ((Calls{"session 7", receiverEnd(mOurs)}), handler.calls());
}

TEST_F(IpcReceiverTest, ThrowingSessionEndDoesNotCostTheLastCall) {
  struct Throwing : RecordingHandler {
    void handleSessionEnd(unsigned int) override { throw std::runtime_error("no"); }
  } handler;
  mOurs = mPair.ours;
  ASSERT_TRUE(registerSocket(kPeer, 7, mPair.ours, handler));
  mPair.closePeer();
  ASSERT_TRUE(handler.waitForEnd());
  EXPECT_TRUE(isClosed(mOurs));
  EXPECT_EQ((Calls{receiverEnd(mOurs)}), handler.calls());
}

TEST_F(IpcReceiverTest, ReceiverOfAHandlerThatIsGoneStillGivesEverythingBack) {
  auto handler = std::make_shared<RecordingHandler>();
  const auto ended = handler->threadSemaphore();
  mOurs = mPair.ours;
  ASSERT_TRUE(registerSocket(kPeer, 7, std::make_shared<IpcSocket>(mPair.ours), handler));
  const std::weak_ptr<RecordingHandler> watched = handler;
  handler.reset();
  EXPECT_TRUE(watched.expired());  // the waiting receiver keeps no object alive
  sendFrame(header(0));
  ASSERT_TRUE(ended->decreaseFor(kPatience));
  EXPECT_TRUE(isClosed(mOurs));
  EXPECT_FALSE(isRegistered(kPeer, 7));
}

TEST_F(IpcReceiverTest, KnowsItsOwnThread) {
  struct Asking : RecordingHandler {
    void handleSessionEnd(unsigned int) override {
      own = isReceiverThreadOf(threadSemaphore().get());
    }
    bool own = false;
  } handler;
  ASSERT_TRUE(registerSocket(kPeer, 7, mPair.ours, handler));
  mPair.closePeer();
  ASSERT_TRUE(handler.waitForEnd());
  EXPECT_TRUE(handler.own);
  EXPECT_FALSE(isReceiverThreadOf(handler.threadSemaphore().get()));
  EXPECT_FALSE(isReceiverThreadOf(nullptr));
}

}  // namespace
