// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "SdkClientBase.h"

#include <algorithm>
#include <stdexcept>
#include <string>

#include "EventManagerFixture.h"
#include "Recorder.h"

namespace {

using Blob = std::vector<uint8_t>;
using Type = OrbSdkClientType;
using Strings = std::vector<std::string>;

constexpr Type kUnused = static_cast<Type>(12);

std::string number(Type type) { return std::to_string(static_cast<int>(type)); }

// The platform part, played by the test: records the calls.
class FakeClient : public SdkClientBase {
 public:
  FakeClient(OrbTimer* timer, orb::utils::EventManager* manager) : SdkClientBase(timer, manager) {}

  void connectOrbSdkClient(Type type) override {
    note("connect " + number(type));
    connected = connectable.load();
  }
  bool isConnected(Type) override { return connected; }
  bool sendBlobToService(Type type, Blob blob) override {
    note("send " + number(type) + " " + std::to_string(blob.size()));
    return sendable;
  }
  bool sendDisableMessage(SdkClientEvent& event) override {
    return sendBlobToService(event.type, event.blob);
  }

  void note(const std::string& what) { mNotes.add(what); }
  Strings notes() { return mNotes.all(); }
  bool waitForNotes(size_t count) { return mNotes.waitForCount(count); }
  Listener noting(Type type) {
    return [this, type](SdkStatus status, const Blob& blob) {
      note("listener " + number(type) + " " + std::to_string(status) + " " +
           std::to_string(blob.size()));
    };
  }
  void setRunning(bool running) { mRunning = running; }
  bool awaitEnd() { return mLife->awaitEnd(std::chrono::seconds(10)); }

  std::atomic<bool> connected{false};
  std::atomic<bool> connectable{true};
  std::atomic<bool> sendable{true};

 private:
  Recorder<std::string> mNotes;
};

// Without a worker: the test calls handleEvent().
class SdkClientBaseTest : public EventManagerTest {
 protected:
  void SetUp() override {
    EventManagerTest::SetUp();
    mTimer = std::make_unique<OrbTimer>(nullptr);
    mClient = std::make_shared<FakeClient>(mTimer.get(), mManager.get());
    recording::clear();
  }
  void TearDown() override {
    mClient.reset();
    pass();
    EventManagerTest::TearDown();
  }
  void handle(Type type, Blob blob, bool cleanup = false, bool inbound = false) {
    auto event = std::make_shared<SdkClientEvent>(type, std::move(blob), cleanup);
    event->inbound = inbound;
    mClient->handleEvent(event);
  }
  // Messages of the class's own lines; each has debug priority and no tag.
  static Strings sdkLines() {
    Strings result;
    const std::string head = "|OrbSdk|SdkClientBase::";
    for (const auto& [priority, line] : log()) {
      if (line.compare(0, head.size(), head) != 0) continue;
      EXPECT_EQ(3, priority);
      result.push_back(line.substr(line.find(' ') + 1));
    }
    return result;
  }
  static Entries errors() {
    Entries result;
    for (const Entry& entry : log()) {
      if (entry.first == 6) result.push_back(entry);
    }
    return result;
  }

  std::unique_ptr<OrbTimer> mTimer;
  std::shared_ptr<FakeClient> mClient;
};

TEST_F(SdkClientBaseTest, UnusedTransactionIdsStandAtOne) {
  EXPECT_EQ(1u, SdkClientBase::mTransactionId);
  EXPECT_EQ(1u, SdkClientBase::mTransactionId32);
}

TEST_F(SdkClientBaseTest, NoTypeIsActiveAtFirst) {
  for (uint32_t type = 0; type < kOrbSdkClientTypes; ++type) {
    EXPECT_FALSE(mClient->isTypeActive(static_cast<Type>(type))) << type;
  }
  EXPECT_FALSE(mClient->isRunning());
}

TEST_F(SdkClientBaseTest, EventIsDroppedWhileNotRunning) {
  handle(Type::LCE, {1});
  EXPECT_TRUE(mClient->notes().empty());
  EXPECT_EQ(sdkLines(), (Strings{"handleEvent", "handleEvent called while thread not running"}));
}

TEST_F(SdkClientBaseTest, ConnectedTypeSendsWithoutConnecting) {
  mClient->setRunning(true);
  mClient->connected = true;
  handle(Type::LCE, {1, 2, 3});
  EXPECT_EQ(mClient->notes(), Strings{"send 9 3"});
  EXPECT_EQ(sdkLines(), Strings{"handleEvent"});
}

TEST_F(SdkClientBaseTest, UnconnectedTypeConnectsOnceThenSends) {
  mClient->setRunning(true);
  handle(Type::LLE, {1});
  EXPECT_EQ(mClient->notes(), (Strings{"connect 10", "send 10 1"}));
  EXPECT_EQ(sdkLines(), (Strings{"handleEvent", "Reconnect client"}));
}

TEST_F(SdkClientBaseTest, BlobIsDroppedSilentlyWhenConnectingFails) {
  mClient->setRunning(true);
  mClient->connectable = false;
  mClient->setClientListener(Type::LCE, mClient->noting(Type::LCE));
  handle(Type::LCE, {1});
  EXPECT_EQ(mClient->notes(), Strings{"connect 9"});
}

TEST_F(SdkClientBaseTest, FailedSendIsToldToTheListenerOfItsType) {
  mClient->setRunning(true);
  mClient->connected = true;
  mClient->sendable = false;
  mClient->setClientListener(Type::LCE, mClient->noting(Type::LCE));
  mClient->setClientListener(Type::LLE, mClient->noting(Type::LLE));
  handle(Type::LCE, {1});
  EXPECT_EQ(mClient->notes(), (Strings{"send 9 1", "listener 9 1 0"}));
}

TEST_F(SdkClientBaseTest, FailedSendWithoutListenerIsNotReported) {
  mClient->setRunning(true);
  mClient->connected = true;
  mClient->sendable = false;
  mClient->setClientListener(Type::LLE, mClient->noting(Type::LLE));
  handle(Type::LCE, {1});
  EXPECT_EQ(mClient->notes(), Strings{"send 9 1"});
}

TEST_F(SdkClientBaseTest, InboundEventGoesToTheListenerOnly) {
  mClient->setRunning(true);
  mClient->setClientListener(Type::LCE, mClient->noting(Type::LCE));
  handle(Type::LCE, {1, 2}, false, true);
  EXPECT_EQ(mClient->notes(), Strings{"listener 9 0 2"});
  EXPECT_EQ(sdkLines(), (Strings{"handleEvent", "sendClient"}));
}

TEST_F(SdkClientBaseTest, InboundEventWithoutListenerIsSentLikeAnyOther) {
  mClient->setRunning(true);
  handle(Type::LCE, {1, 2}, false, true);
  EXPECT_EQ(mClient->notes(), (Strings{"connect 9", "send 9 2"}));
}

TEST_F(SdkClientBaseTest, CleanupOfAnUnconnectedTypeOnlyDeactivatesIt) {
  mClient->setRunning(true);
  mClient->activateType(Type::LCE);
  handle(Type::LCE, {1}, true);
  EXPECT_TRUE(mClient->notes().empty());
  EXPECT_FALSE(mClient->isTypeActive(Type::LCE));
  EXPECT_FALSE(mClient->isRunning());
  EXPECT_EQ(sdkLines(), (Strings{"handleEvent", "cleanup"}));
}

TEST_F(SdkClientBaseTest, CleanupOfAConnectedTypeSendsItsBlobFirst) {
  mClient->setRunning(true);
  mClient->connected = true;
  mClient->activateType(Type::LCE);
  handle(Type::LCE, {1}, true);
  EXPECT_EQ(mClient->notes(), Strings{"send 9 1"});
  EXPECT_FALSE(mClient->isTypeActive(Type::LCE));
}

TEST_F(SdkClientBaseTest, CleanupSendsAnEmptyBlobTooUnlessItIsSilent) {
  mClient->setRunning(true);
  mClient->connected = true;
  mClient->activateType(Type::LLE);
  handle(Type::LCE, {}, true);
  EXPECT_EQ(mClient->notes(), Strings{"send 9 0"});
  const auto silent = std::make_shared<SdkClientEvent>(Type::LCE, Blob{}, true);
  silent->silent = true;
  mClient->setRunning(true);
  mClient->handleEvent(silent);
  EXPECT_EQ(mClient->notes(), Strings{"send 9 0"});
}

TEST_F(SdkClientBaseTest, OneOfTwoTypesKeepsTheWorkerRunning) {
  mClient->setRunning(true);
  mClient->activateType(Type::LCE);
  mClient->activateType(Type::LLE);
  handle(Type::LCE, {}, true);
  EXPECT_TRUE(mClient->isRunning());
  EXPECT_FALSE(mClient->isTypeActive(Type::LCE));
  EXPECT_TRUE(mClient->isTypeActive(Type::LLE));
  handle(Type::LLE, {}, true);
  EXPECT_FALSE(mClient->isRunning());
}

TEST_F(SdkClientBaseTest, LateCleanupDoesNotDeactivateASuccessorOfTheSameType) {
  mClient->setRunning(true);
  mClient->activateType(Type::LCE);
  mClient->activateType(Type::LCE);
  handle(Type::LCE, {}, true);
  EXPECT_TRUE(mClient->isTypeActive(Type::LCE));
  EXPECT_TRUE(mClient->isRunning());
}

TEST_F(SdkClientBaseTest, ReceivedBlobGoesToItsListener) {
  mClient->setClientListener(Type::LLE, mClient->noting(Type::LLE));
  mClient->notifyReceivedBlob(Type::LLE, {1, 2, 3});
  EXPECT_EQ(mClient->notes(), Strings{"listener 10 0 3"});
  EXPECT_EQ(sdkLines(), Strings{"Send response RESPONSE 10"});
}

TEST_F(SdkClientBaseTest, ReceivedBlobOfAnUnregisteredTypeIsAnErrorLine) {
  mClient->setClientListener(Type::LLE, mClient->noting(Type::LLE));
  mClient->notifyReceivedBlob(kUnused, {1});
  EXPECT_TRUE(mClient->notes().empty());
  EXPECT_EQ(errors(),
            (Entries{{6,
                      "OrbSdkClientType 12 is not registered with this client. Should never "
                      "occur!"}}));
  EXPECT_TRUE(sdkLines().empty());
}

TEST_F(SdkClientBaseTest, EmptyListenerIsLoggedAndStillCalled) {
  mClient->setClientListener(Type::LCE, {});
  EXPECT_THROW(mClient->notifyReceivedBlob(Type::LCE, {1}), std::bad_function_call);
  EXPECT_EQ(sdkLines(), (Strings{"second null", "Send response RESPONSE 9"}));
}

TEST_F(SdkClientBaseTest, NewListenerReplacesTheFormer) {
  mClient->setClientListener(Type::LCE, mClient->noting(kUnused));
  mClient->setClientListener(Type::LCE, mClient->noting(Type::LCE));
  mClient->notifyReceivedBlob(Type::LCE, {});
  EXPECT_EQ(mClient->notes(), Strings{"listener 9 0 0"});
}

TEST_F(SdkClientBaseTest, ListenerMayReplaceItself) {
  mClient->setClientListener(Type::LCE, [this](SdkClientBase::SdkStatus, const Blob&) {
    mClient->setClientListener(Type::LCE, mClient->noting(Type::LCE));
  });
  mClient->notifyReceivedBlob(Type::LCE, {});
  mClient->notifyReceivedBlob(Type::LCE, {});
  EXPECT_EQ(mClient->notes(), Strings{"listener 9 0 0"});
}

TEST_F(SdkClientBaseTest, ServiceUpIsToldToItsTypeAlone) {
  mClient->setClientListener(Type::LCE, mClient->noting(Type::LCE));
  mClient->setClientListener(Type::LLE, mClient->noting(Type::LLE));
  mClient->notifyServiceUp(Type::LLE);
  mClient->notifyServiceUp(Type::LLI);
  EXPECT_EQ(mClient->notes(), Strings{"listener 10 3 0"});
}

TEST_F(SdkClientBaseTest, ServiceDownIsToldToAllInAscendingTypeOrder) {
  for (const Type type : {Type::LLI, Type::LCE, Type::LLE}) {
    mClient->setClientListener(type, mClient->noting(type));
  }
  mClient->notifyServiceDown();
  EXPECT_EQ(mClient->notes(), (Strings{"listener 9 2 0", "listener 10 2 0", "listener 11 2 0"}));
}

TEST_F(SdkClientBaseTest, WorkerHandlesItsFirstEventAndEndsWithTheLastType) {
  mClient->activateType(Type::LCE);
  ASSERT_TRUE(mClient->start(Type::LCE, std::make_shared<SdkClientEvent>(Type::LCE, Blob{1})));
  EXPECT_TRUE(mClient->isRunning()) << "start returns when the worker runs";
  mClient->postEvent(std::make_shared<SdkClientEvent>(Type::LCE, Blob{1, 2}));
  ASSERT_TRUE(mClient->waitForNotes(3));
  EXPECT_EQ(mClient->notes(), (Strings{"connect 9", "send 9 1", "send 9 2"}));
  mClient->postEvent(std::make_shared<SdkClientEvent>(Type::LCE, Blob{}, true));
  ASSERT_TRUE(mClient->awaitEnd());
  EXPECT_FALSE(mClient->isRunning());
  const Strings lines = sdkLines();
  EXPECT_EQ((Strings{"sdkThread called", "sdkThread loop"}),
            Strings(lines.begin(), lines.begin() + 2));
  EXPECT_EQ("sdkThread loop END", lines.back());
  EXPECT_TRUE(recording::has("|OrbSdk|SdkClientBase::sdkThread:43 sdkThread loop"));
  EXPECT_EQ(1, mClient.use_count()) << "the ended worker holds the client no more";
}

TEST_F(SdkClientBaseTest, WorkerStartsWithoutAnEvent) {
  mClient->activateType(Type::LCE);
  ASSERT_TRUE(mClient->start(Type::LCE, nullptr));
  mClient->postEvent(std::make_shared<SdkClientEvent>(Type::LCE, Blob{}, true));
  ASSERT_TRUE(mClient->awaitEnd());
  EXPECT_TRUE(mClient->notes().empty());
}

TEST_F(SdkClientBaseTest, WorkerOutlivesWhateverAListenerThrows) {
  mClient->connected = true;
  mClient->sendable = false;  // the listener is notified
  mClient->activateType(Type::LCE);
  mClient->setClientListener(Type::LCE, [this](SdkClientBase::SdkStatus, const Blob&) {
    mClient->note("throws");
    throw 42;
  });
  ASSERT_TRUE(mClient->start(Type::LCE, nullptr));
  mClient->postEvent(std::make_shared<SdkClientEvent>(Type::LCE, Blob(1)));
  mClient->postEvent(std::make_shared<SdkClientEvent>(Type::LCE, Blob(2)));
  ASSERT_TRUE(mClient->waitForNotes(4));
  EXPECT_EQ(mClient->notes(), (Strings{"send 9 1", "throws", "send 9 2", "throws"}));
  EXPECT_TRUE(mClient->isRunning());
  mClient->setClientListener(Type::LCE, nullptr);
  mClient->postEvent(std::make_shared<SdkClientEvent>(Type::LCE, Blob{}, true));
  ASSERT_TRUE(mClient->awaitEnd());
  const Strings lines = sdkLines();
  EXPECT_EQ(2, std::count(lines.begin(), lines.end(), "sdkThread: an exception"));
}

TEST_F(SdkClientBaseTest, EventsBehindTheLastCleanupAreDropped) {
  mClient->setRunning(true);
  mClient->connected = true;
  mClient->activateType(Type::LCE);
  mClient->postEvent(std::make_shared<SdkClientEvent>(Type::LCE, Blob{1}, true));
  mClient->postEvent(std::make_shared<SdkClientEvent>(Type::LCE, Blob{1, 2}));
  pass();
  EXPECT_EQ(mClient->notes(), Strings{"send 9 1"});
  EXPECT_EQ("handleEvent called while thread not running", sdkLines().back());
}

}  // namespace
