// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Connecting, dispatch, sending and the end of a session.
#include <sys/un.h>

#include <chrono>
#include <future>
#include <thread>

#include "SessionFixture.h"
#include "orbsim/Handshake.h"

namespace ipctest {
namespace {

using OrbIpcSessionTest = SessionTest;
using Registry = std::unordered_map<unsigned int, IpcMsgConstructorHandlerPair_t>;

class NoteMessage : public OrbIpcMessage {
 public:
  explicit NoteMessage(Bytes bytes) : OrbIpcMessage("NoteMessage", 20), mBytes(std::move(bytes)) {}
  Bytes serialize() override { return mBytes; }
  void deserialize(Bytes bytes) override { mBytes = std::move(bytes); }
  Bytes mBytes;
};

std::shared_ptr<OrbIpcMessage> makeNote(Bytes bytes) {
  return std::make_shared<NoteMessage>(std::move(bytes));
}

TEST_F(OrbIpcSessionTest, FiftyAttemptsWithoutADaemonThenOneFailure) {
  mDaemon.stop();
  const size_t before = openDescriptors();
  const auto start = std::chrono::steady_clock::now();
  connect();
  // 49 pauses of 100 ms; nothing may shorten them.
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(4900));
  EXPECT_EQ((std::vector<bool>{false}), mStatuses.all());
  EXPECT_EQ(50u, countLogged(kDebug, "Connect ret: -1"));
  EXPECT_EQ(1u, countLogged(kDebug, "Connect fail: Max retry reached!!"));
  EXPECT_EQ(before, openDescriptors());
}

TEST_F(OrbIpcSessionTest, SecondConnectOfAnOpenSessionIsRefused) {
  connectAndExpectSuccess();
  recording::clear();
  connect();
  EXPECT_EQ((std::vector<bool>{true}), mStatuses.all());
  EXPECT_EQ((Entries{{kDebug, "case OrbIpcConnectToServerMessage::ID: 1"},
                     {kError, "mSocketFd != -1; RETURNING!!!"}}),
            logged());
  EXPECT_TRUE(mSession->isConnected());
  EXPECT_EQ(1u, mDaemon.totals().connections);
}

TEST_F(OrbIpcSessionTest, NullMessageIsAnError) {
  mSession->handleEvent(nullptr);
  EXPECT_TRUE(hasLogged(kError, "msg is nullptr!!!!"));
}

TEST_F(OrbIpcSessionTest, NullFrameIsAnError) {
  mSession->handleMsg(nullptr);
  EXPECT_TRUE(hasLogged(kError, "ipcMsg is null"));
}

TEST_F(OrbIpcSessionTest, RegisteredMessageIsBuiltAndHandled) {
  std::shared_ptr<OrbIpcMessage> handled;
  mSession->registerForMessages(
      {{20, {makeNote, [&](std::shared_ptr<OrbIpcMessage> msg) { handled = std::move(msg); }}}});
  recording::clear();
  FrameBuffer buffer(20, 3, {1, 2});
  mSession->handleMsg(buffer.frame());
  ASSERT_NE(nullptr, handled);
  EXPECT_EQ((Bytes{1, 2}), handled->serialize());
  EXPECT_EQ(mSession, handled->session());
  EXPECT_EQ((Entries{{kDebug, "Received IPC message id: 20, state: 3"},
                     {kDebug, "case OrbIpcIncomingRawMessage::ID: 2"},
                     {kError, "handling OrbIpcIncomingRawMessage"},
                     {kError, "DEBUG: msgId: 2"},
                     {kDebug, "SubSystemId: 3, MsgId"},
                     {kDebug, "Found message constructor; constructing msg"},
                     {kDebug, "Found message handler; calling handler"}}),
            logged());
}

TEST_F(OrbIpcSessionTest, UnregisteredMessageIsDropped) {
  FrameBuffer buffer(21, 0, {});
  mSession->handleMsg(buffer.frame());
  EXPECT_TRUE(hasLogged(kError, "No MessageConstructor registered for msg: 21"));
}

TEST_F(OrbIpcSessionTest, EntryWithoutConstructorOrHandlerIsInvalid) {
  bool called = false;
  mSession->registerForMessages({{20, {makeNote, nullptr}}});
  mSession->registerForMessages({{21, {nullptr, [&](auto) { called = true; }}}});
  FrameBuffer first(20, 0, {});
  FrameBuffer second(21, 0, {});
  mSession->handleMsg(first.frame());
  mSession->handleMsg(second.frame());
  EXPECT_FALSE(called);
  EXPECT_EQ(2u, countLogged(kDebug, "Invalid MessageHandler"));
  EXPECT_EQ(2u, countLogged(kDebug, "Found message constructor; constructing msg"));
  EXPECT_FALSE(hasLogged(kDebug, "Found message handler; calling handler"));
}

TEST_F(OrbIpcSessionTest, HandlerIsCalledAlsoWithoutAMessage) {
  int calls = 0;
  mSession->registerForMessages({{20,
                                  {[](Bytes) { return std::shared_ptr<OrbIpcMessage>(); },
                                   [&](std::shared_ptr<OrbIpcMessage> msg) {
                                     ++calls;
                                     EXPECT_EQ(nullptr, msg);
                                   }}}});
  FrameBuffer buffer(20, 0, {});
  mSession->handleMsg(buffer.frame());
  EXPECT_EQ(1, calls);
}

TEST_F(OrbIpcSessionTest, FirstEntryOfAnIdStays) {
  std::string who;
  mSession->registerForMessages({{20, {makeNote, [&](auto) { who += "first "; }}}});
  mSession->registerForMessages({{20, {makeNote, [&](auto) { who += "second "; }}},
                                 {21, {makeNote, [&](auto) { who += "other "; }}}});
  FrameBuffer first(20, 0, {});
  FrameBuffer other(21, 0, {});
  mSession->handleMsg(first.frame());
  mSession->handleMsg(other.frame());
  EXPECT_EQ("first other ", who);
}

TEST_F(OrbIpcSessionTest, RawHandlerTakesEveryMessage) {
  bool registered = false;
  unsigned int subsystem = 0;
  unsigned int id = 0;
  Bytes bytes;
  mSession->registerForMessages({{20, {makeNote, [&](auto) { registered = true; }}}});
  mSession->registerForRawMessage([](unsigned int, unsigned int, Bytes) { FAIL(); });
  mSession->registerForRawMessage([&](unsigned int s, unsigned int m, Bytes payload) {
    subsystem = s;
    id = m;
    bytes = std::move(payload);
  });
  recording::clear();
  FrameBuffer buffer(20, 3, {4, 5});
  mSession->handleMsg(buffer.frame());
  EXPECT_FALSE(registered);
  EXPECT_EQ(3u, subsystem);
  EXPECT_EQ(20u, id);
  EXPECT_EQ((Bytes{4, 5}), bytes);
  EXPECT_EQ(Entry(kDebug, "Found raw message handler"), logged().back());
}

TEST_F(OrbIpcSessionTest, SendWithoutConnectionIsRefusedSilently) {
  recording::clear();
  EXPECT_FALSE(mSession->send(makeNote({1})));
  EXPECT_FALSE(mSession->send(1, 2, {3}));
  EXPECT_TRUE(logged().empty());
}

TEST_F(OrbIpcSessionTest, MessageMayBeSentAtOnceByAnyThread) {
  const auto note = makeNote({1, 2});
  EXPECT_FALSE(mSession->sendAtOnce(*note));  // not connected
  connectAndExpectSuccess();
  std::thread other([&] { EXPECT_TRUE(mSession->sendAtOnce(*note)); });
  other.join();
  ASSERT_TRUE(mDaemon.waitForFrames(1));
  const auto frames = mDaemon.frames();
  EXPECT_EQ((Bytes{1, 2}), frames[0].payload);
  EXPECT_EQ(note->id(), frames[0].header.messageId);
}

TEST_F(OrbIpcSessionTest, SendingAtOnceDoesNotWaitForADaemonThatDoesNotRead) {
  connectAndExpectSuccess();
  mDaemon.setReading(false);
  const auto note = makeNote(Bytes(16384));
  int sent = 0;
  while (sent < 10000 && mSession->sendAtOnce(*note)) ++sent;
  EXPECT_LT(0, sent);
  EXPECT_GT(10000, sent);  // the socket's buffer is full, and no send waits
  mDaemon.setReading(true);
}

TEST_F(OrbIpcSessionTest, RoomIsAwaitedUntilTheDaemonReads) {
  using Clock = std::chrono::steady_clock;
  EXPECT_FALSE(mSession->awaitRoom(Clock::now() + kPatience));  // not connected
  connectAndExpectSuccess();
  EXPECT_TRUE(mSession->awaitRoom(Clock::now() + kPatience));
  mDaemon.setReading(false);
  const auto note = makeNote(Bytes(16384));
  while (mSession->sendAtOnce(*note)) {
  }
  EXPECT_TRUE(mSession->awaitRoom(Clock::now()));  // the time is up
  EXPECT_FALSE(mSession->sendAtOnce(*note));
  std::thread reader([&] { mDaemon.setReading(true); });
  EXPECT_TRUE(mSession->awaitRoom(Clock::now() + kPatience));
  EXPECT_TRUE(mSession->sendAtOnce(*note));
  reader.join();
  mSession->beginClose();
  EXPECT_FALSE(mSession->awaitRoom(Clock::now() + kPatience));
}

TEST_F(OrbIpcSessionTest, QueuedMessageWithoutConnectionIsDropped) {
  recording::clear();
  mSession->handleEvent(makeNote({1}));
  EXPECT_EQ((Entries{{kDebug, "case default"},
                     {kDebug, "msg id: 20"},
                     {kError, "IPC socket is not connected"}}),
            logged());
  recording::clear();
  mSession->handleEvent(std::make_shared<OrbIpcRawMessage>(3, 9, Bytes{1}));
  EXPECT_EQ((Entries{{kDebug, "case OrbIpcRawMessage::ID: 3"},
                     {kDebug, "subsystem id: 3 msg id: 9"},
                     {kError, "IPC socket is not connected"}}),
            logged());
}

TEST_F(OrbIpcSessionTest, TypedMessageIsAFrameOfItsIdAndSubsystemZero) {
  mDaemon.setNextSessionId(7);
  connectAndExpectSuccess();
  EXPECT_TRUE(mSession->send(makeNote({0xA0, 0xB0})));
  ASSERT_TRUE(mDaemon.waitForFrames(1));
  EXPECT_EQ(
      (Bytes{105, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 20, 0, 0, 0, 0, 0, 0, 0,    0,
             0,   0, 0, 0, 0, 0, 0, 7, 0, 0, 0, 0, 0, 0, 0, 2, 0,  0, 0, 0, 0, 0, 0, 0xA0, 0xB0}),
      mDaemon.frames().at(0).bytes());
}

TEST_F(OrbIpcSessionTest, RawMessageKeepsItsSubsystemAndId) {
  mDaemon.setNextSessionId(0xFFFFFFFF);
  connectAndExpectSuccess();
  EXPECT_TRUE(mSession->send(0x80000000, 3, {}));
  ASSERT_TRUE(mDaemon.waitForFrames(1));
  const auto header = mDaemon.frames().at(0).header;
  EXPECT_EQ(105u, header.source);
  EXPECT_EQ(1u, header.destination);
  EXPECT_EQ(3u, header.messageId);
  EXPECT_EQ(int64_t{0x80000000}, header.subsystemId);
  EXPECT_EQ(0xFFFFFFFFu, header.sessionId);
  EXPECT_EQ(0u, header.payloadLength);
}

TEST_F(OrbIpcSessionTest, FrameOfTheDaemonIsHandledOnTheReceiverThread) {
  std::promise<std::thread::id> handled;
  mSession->registerForRawMessage(
      [&](unsigned int, unsigned int, Bytes) { handled.set_value(std::this_thread::get_id()); });
  connectAndExpectSuccess();
  ASSERT_TRUE(mDaemon.sendFrame(1, mDaemon.headerFor(1, 20, 0), {}));
  EXPECT_NE(std::this_thread::get_id(), handled.get_future().get());
}

TEST_F(OrbIpcSessionTest, DaemonClosingReportsOneLoss) {
  connectAndExpectSuccess();
  const int fd = lastSocket();
  const auto ended = mSession->threadSemaphore();
  mDaemon.closeSession(1);
  ASSERT_TRUE(ended->decreaseFor(kPatience));
  EXPECT_EQ((std::vector<bool>{true, false}), mStatuses.all());
  EXPECT_FALSE(mSession->isConnected());
  EXPECT_FALSE(mSession->send(makeNote({})));
  EXPECT_TRUE(hasLogged(kDebug, "handleSessionEnd for session 1"));
  EXPECT_TRUE(hasLogged(kDebug, "case OrbIpcSessionEndMessage::ID: 4"));
  EXPECT_FALSE(hasLogged(kDebug, "closing socket Fd " + std::to_string(fd)));
  mSession->cleanup();  // nothing is left to wait for
}

TEST_F(OrbIpcSessionTest, SessionWithIdZeroLearnsOfItsEnd) {
  mDaemon.setNextSessionId(0);
  connectAndExpectSuccess();
  EXPECT_EQ(0u, mSession->sessionId());
  const auto ended = mSession->threadSemaphore();
  mDaemon.closeAll();
  ASSERT_TRUE(ended->decreaseFor(kPatience));
  EXPECT_EQ((std::vector<bool>{true, false}), mStatuses.all());
  EXPECT_FALSE(mSession->isConnected());
}

TEST_F(OrbIpcSessionTest, CleanupReportsNothingAndGivesTheDescriptorBack) {
  const size_t before = openDescriptors();
  connectAndExpectSuccess();
  const int fd = lastSocket();
  mSession->cleanup();
  EXPECT_EQ((std::vector<bool>{true}), mStatuses.all());
  EXPECT_TRUE(hasLogged(kDebug, "closing socket Fd " + std::to_string(fd)));
  EXPECT_FALSE(isRegistered(1, 1));
  ASSERT_TRUE(mDaemon.waitForConnectionsClosed(1));
  EXPECT_EQ(before, openDescriptors());
  mSession->cleanup();  // a second call does nothing
}

// The semaphore of the lost connection is still raised. The cleanup of the next connection must
// wait for the next receiver.
TEST_F(OrbIpcSessionTest, CleanupAfterReconnectWaitsForTheNewReceiver) {
  std::promise<void> entered;
  std::promise<void> release;
  std::atomic<bool> left{false};
  mSession->registerForRawMessage([&](unsigned int, unsigned int, Bytes) {
    entered.set_value();
    release.get_future().wait();
    left = true;
  });
  connectAndExpectSuccess();
  const auto first = mSession->threadSemaphore();
  mDaemon.closeSession(1);
  ASSERT_TRUE(mStatuses.waitForCount(2));
  ASSERT_TRUE(mDaemon.waitForConnectionsClosed(1));
  connect();
  ASSERT_EQ((std::vector<bool>{true, false, true}), mStatuses.all());
  EXPECT_NE(first, mSession->threadSemaphore());
  const int fd = lastSocket();
  ASSERT_TRUE(mDaemon.waitForSessions(2));
  ASSERT_TRUE(mDaemon.sendFrame(2, mDaemon.headerFor(2, 20, 0), {}));
  entered.get_future().wait();
  bool receiverHadLeft = false;
  std::thread closer([&] {
    mSession->cleanup();
    receiverHadLeft = left;
  });
  EXPECT_TRUE(waitLogged(kDebug, "closing socket Fd " + std::to_string(fd)));
  release.set_value();
  closer.join();
  EXPECT_TRUE(receiverHadLeft);
  EXPECT_EQ((std::vector<bool>{true, false, true}), mStatuses.all());
}

TEST_F(OrbIpcSessionTest, CleanupOnTheReceiverThreadDoesNotWaitForItself) {
  std::promise<void> cleaned;
  mSession->registerForRawMessage([&](unsigned int, unsigned int, Bytes) {
    mSession->cleanup();
    cleaned.set_value();
  });
  connectAndExpectSuccess();
  const auto ended = mSession->threadSemaphore();
  ASSERT_TRUE(mDaemon.sendFrame(1, mDaemon.headerFor(1, 20, 0), {}));
  cleaned.get_future().wait();
  EXPECT_TRUE(ended->decreaseFor(kPatience));
  EXPECT_EQ((std::vector<bool>{true}), mStatuses.all());
}

TEST_F(OrbIpcSessionTest, CleanupEndsTheRetryLoopWithoutAReport) {
  mDaemon.stop();
  std::thread connector([&] { connect(); });
  ASSERT_TRUE(waitLogged(kDebug, "Connect ret: -1"));
  mSession->cleanup();
  connector.join();
  EXPECT_TRUE(mStatuses.all().empty());
  EXPECT_TRUE(hasLogged(kDebug, "Connect fail: mSocketFd is -1; break"));
  EXPECT_LT(countLogged(kDebug, "Connect ret: -1"), 50u);
}

TEST_F(OrbIpcSessionTest, CleanupEndsASilentHandshakeWithoutAReport) {
  mDaemon.setHandshake([](int fd, uint32_t) {
    char byte;
    return recv(fd, &byte, 1, 0) > 0;
  });
  std::thread connector([&] { connect(); });
  ASSERT_TRUE(waitLogged(kDebug, "Connect ret: 0"));
  mSession->cleanup();
  connector.join();
  EXPECT_TRUE(mStatuses.all().empty());
  EXPECT_FALSE(mSession->isConnected());
  EXPECT_TRUE(mDaemon.waitForConnectionsClosed(1));
}

TEST_F(OrbIpcSessionTest, SessionConnectsAgainAfterCleanup) {
  connectAndExpectSuccess();
  mSession->cleanup();
  connect();
  EXPECT_EQ((std::vector<bool>{true, true}), mStatuses.all());
  EXPECT_TRUE(mSession->isConnected());
}

TEST_F(OrbIpcSessionTest, BegunCloseIsForGood) {
  connectAndExpectSuccess();
  mSession->beginClose();
  EXPECT_TRUE(mSession->awaitReceiver(kPatience));
  EXPECT_TRUE(mSession->awaitReceiver(std::chrono::milliseconds(0)));  // the end stays visible
  EXPECT_FALSE(mSession->isConnected());
  connect();
  EXPECT_EQ((std::vector<bool>{true}), mStatuses.all());
  EXPECT_EQ(1u, mDaemon.totals().connections);
}

TEST_F(OrbIpcSessionTest, StoppedRetryingMakesOneAttempt) {
  mDaemon.stop();
  mSession->stopRetrying();
  connect();
  EXPECT_EQ((std::vector<bool>{false}), mStatuses.all());
  EXPECT_EQ(1u, countLogged(kDebug, "Connect ret: -1"));
}

TEST_F(OrbIpcSessionTest, FullBacklogIsAFailedAttempt) {
  orbsim::Options options;
  options.socketPath = mDaemon.socketPath();
  options.backlog = 1;
  mDaemon.stop();
  orbsim::Daemon busy(options);
  busy.setAccepting(false);
  ASSERT_TRUE(busy.start());
  std::vector<std::unique_ptr<UniqueFd>> waiting;
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  strncpy(address.sun_path, options.socketPath.c_str(), sizeof(address.sun_path) - 1);
  for (int result = 0; result == 0;) {
    waiting.push_back(
        std::make_unique<UniqueFd>(socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)));
    result =
        ::connect(waiting.back()->get(), reinterpret_cast<sockaddr*>(&address), sizeof(address));
  }
  mSession->stopRetrying();
  connect();
  EXPECT_EQ((std::vector<bool>{false}), mStatuses.all());
  EXPECT_TRUE(hasLogged(kDebug, "Connect ret: -1"));
  busy.stop();
}

}  // namespace
}  // namespace ipctest
