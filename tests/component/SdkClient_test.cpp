// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "SdkClient.h"

#include <gtest/gtest.h>

#include <string>

#include "ProcessState.h"
#include "Pulse.h"
#include "Recorder.h"
#include "RecordingPlatform.h"
#include "SdkClientEndpoint.h"
#include "orbsim/Daemon.h"

namespace {

using Blob = std::vector<uint8_t>;
using Type = OrbSdkClientType;
using Strings = std::vector<std::string>;

class SdkClientTest : public ::testing::Test {
 protected:
  void SetUp() override {
    mDaemon.setAutoAnswer(false);
    ASSERT_TRUE(mDaemon.start()) << mDaemon.error();
    recording::clear();
  }
  void TearDown() override {
    mClient.reset();
    for (const Type type : {Type::LCE, Type::LLE, Type::LLI}) SdkClient::destroyInstance(type);
    mDaemon.stop();
  }

  static std::shared_ptr<SdkClientEvent> request(Type type, Blob blob = {1}) {
    return std::make_shared<SdkClientEvent>(type, std::move(blob));
  }
  SdkClientBase::Listener noting(Type type) {
    return [this, type](SdkClientBase::SdkStatus status, const Blob& blob) {
      mNotes.add(std::to_string(static_cast<int>(type)) + ":" + std::to_string(status) + ":" +
                 std::to_string(blob.size()));
    };
  }
  Strings notes() { return mNotes.all(); }
  Strings waitForNotes(size_t count) { return mNotes.waitForAll(count); }
  void forgetNotes() { mNotes.clear(); }
  // Joins with a first request. Waits until it has arrived and the connection was announced.
  std::shared_ptr<SdkClient> join(Type type) {
    const auto session = static_cast<uint32_t>(mDaemon.totals().sessions + 1);
    auto client = SdkClient::getInstance(type, noting(type), request(type));
    EXPECT_NE(nullptr, client);
    EXPECT_TRUE(mDaemon.waitForFrame(
        [session](const orbsim::Frame& frame) { return frame.sessionId == session; }));
    return client;
  }

  static Strings sdkLines() {
    Strings result;
    for (const recording::Line& line : recording::lines()) {
      if (line.text.find("|OrbSdk|SdkClient") != 0) continue;
      EXPECT_EQ(3, line.priority);
      EXPECT_FALSE(line.hasTag);
      result.push_back(line.text.substr(line.text.find(' ') + 1));
    }
    return result;
  }
  static size_t countLine(const std::string& text) {
    size_t found = 0;
    for (const std::string& line : sdkLines()) found += line == text ? 1 : 0;
    return found;
  }
  static bool waitForLine(const std::string& text) {
    return recording::waitFor([&](const recording::Line& line) {
      return line.text.find("|OrbSdk|SdkClient") == 0 &&
             line.text.substr(line.text.find(' ') + 1) == text;
    });
  }

  orbsim::Daemon mDaemon;
  std::shared_ptr<SdkClient> mClient;

 private:
  Recorder<std::string> mNotes;
};

TEST_F(SdkClientTest, DestroyWithoutInstanceIsALine) {
  SdkClient::destroyInstance(Type::LCE);
  EXPECT_EQ(sdkLines(), Strings{"instance already destroyed"});
}

TEST_F(SdkClientTest, FirstJoinCreatesTheClient) {
  mClient = join(Type::LCE);
  for (const char* text :
       {"SdkClient new Instance created", "Add listener for type 9", "sdkThread called",
        "IPC type: 105", "handleConnectionStatus: 1 type: 9", "IsConnected: 1"}) {
    EXPECT_EQ(1u, countLine(text)) << text;
  }
  EXPECT_TRUE(mClient->isConnected(Type::LCE));
  EXPECT_EQ(notes(), Strings{"9:3:0"});
}

TEST_F(SdkClientTest, SecondTypeSharesClientAndWorkerAndHearsServiceUpAtOnce) {
  mClient = join(Type::LCE);
  forgetNotes();
  const auto client = SdkClient::getInstance(Type::LLE, noting(Type::LLE), request(Type::LLE));
  EXPECT_EQ(mClient, client);
  EXPECT_EQ("10:3:0", notes().at(0));
  ASSERT_TRUE(mDaemon.waitForFrames(2));
  EXPECT_EQ(1u, countLine("Instance is available and already running, post event."));
  EXPECT_EQ(1u, countLine("Add listener for type 10"));
  EXPECT_EQ(1u, countLine("sdkThread called"));
  EXPECT_EQ(1u, countLine("IPC type: 106"));
  const auto frames = mDaemon.frames();
  EXPECT_EQ(105u, frames[0].header.source);
  EXPECT_EQ(7u, frames[0].sdkType());
  EXPECT_EQ(106u, frames[1].header.source);
  EXPECT_EQ(8u, frames[1].sdkType());
}

TEST_F(SdkClientTest, JoinWithoutEventIsRefusedAndChangesNothing) {
  mClient = join(Type::LCE);
  EXPECT_EQ(nullptr, SdkClient::getInstance(Type::LLE, noting(Type::LLE), nullptr));
  EXPECT_EQ(1u, countLine("Instance and atomic bool miss match."));
  EXPECT_FALSE(mClient->isTypeActive(Type::LLE));
  EXPECT_EQ(0u, countLine("Add listener for type 10"));
}

TEST_F(SdkClientTest, LeavingTypeTakesOnlyItsSessionAndTheLastOneTheClient) {
  const std::weak_ptr<SdkClient> client = join(Type::LCE);
  join(Type::LLE);
  forgetNotes();
  SdkClient::destroyInstance(Type::LCE);
  ASSERT_TRUE(mDaemon.waitForSessionsClosed(1));
  EXPECT_EQ(mDaemon.sessionIds(), std::vector<uint32_t>{2});
  ASSERT_NE(nullptr, client.lock());
  EXPECT_FALSE(client.lock()->isConnected(Type::LCE));
  EXPECT_TRUE(client.lock()->isConnected(Type::LLE));
  EXPECT_EQ(0u, countLine("cleaning mInstance"));
  EXPECT_TRUE(notes().empty()) << "disabling one type is no outage";
  SdkClient::destroyInstance(Type::LLE);
  ASSERT_TRUE(mDaemon.waitForSessionsClosed(2));
  EXPECT_EQ(1u, countLine("cleaning mInstance"));
  EXPECT_TRUE(waitForLine("sdkThread loop END"));
  EXPECT_TRUE(waitForLine("dtor"));
  EXPECT_TRUE(notes().empty());
  recording::clear();
  SdkClient::destroyInstance(Type::LLE);
  EXPECT_EQ(sdkLines(), Strings{"instance already destroyed"});
}

TEST_F(SdkClientTest, ClientIsClearedAwayAfterItsLastSession) {
  Strings wanted, lines;
  // The worker waits for the receiver, but not for long.
  goesWell([&] {
    EXPECT_TRUE(processstate::libraryThreadsEnd());  // with what they say of former sessions
    recording::clear();
    join(Type::LCE);
    SdkClient::destroyInstance(Type::LCE);
    if (!waitForLine("cleaning mInstance")) return false;
    const std::string session = "session " + std::to_string(mDaemon.totals().sessions);
    wanted = {"closing socket Fd", "Cleaning up " + session, "Notifying " + session,
              "handleSessionEnd for " + session, "cleaning mInstance"};
    lines.clear();
    for (const std::string& text : recording::texts()) {
      for (const std::string& tail : wanted) {
        if (text.find(tail) != std::string::npos) lines.push_back(tail);
      }
    }
    return lines == wanted;
  });
  EXPECT_EQ(5u, lines.size());
  EXPECT_EQ(wanted, lines);
}

TEST_F(SdkClientTest, DisableWithoutAMessageSendsNothing) {
  join(Type::LCE);
  SdkClient::destroyInstance(Type::LCE);
  ASSERT_TRUE(mDaemon.waitForSessionsClosed(1));
  EXPECT_EQ(1u, mDaemon.totals().frames);
}

TEST_F(SdkClientTest, RequestWithTheBytesOfTheDisableMessageIsNotThatMessage) {
  mClient = join(Type::LCE);
  const auto cleanup = std::make_shared<SdkClientEvent>(Type::LCE, Blob{1}, true);
  const auto disable = std::make_shared<SdkDisable>(cleanup);
  mClient->noteDisable(Type::LCE, SdkDisable::Place{disable});
  EXPECT_TRUE(mClient->sendBlobToService(Type::LCE, {1}));
  EXPECT_TRUE(disable->claimMessage()) << "it is still to be sent";
  disable->noteMessageSent();
  mClient->postEvent(cleanup);
  ASSERT_TRUE(mDaemon.waitForSessionsClosed(1));
  EXPECT_EQ(2u, mDaemon.totals().frames) << "not by the worker: somebody else had claimed it";
}

TEST_F(SdkClientTest, NewClientIsMadeAfterTheLastDisable) {
  join(Type::LCE);
  SdkClient::destroyInstance(Type::LCE);
  recording::clear();
  mClient = join(Type::LCE);
  EXPECT_EQ(1u, countLine("SdkClient new Instance created"));
  EXPECT_EQ(2u, mDaemon.totals().sessions);
}

TEST_F(SdkClientTest, BlobGoesToTheListenerOfItsTypeWhateverTheSession) {
  mClient = join(Type::LCE);
  join(Type::LLE);
  forgetNotes();
  ASSERT_TRUE(mDaemon.sendBlob(1, orbsim::kSdkTypeLle, {1, 2, 3}));
  EXPECT_EQ(waitForNotes(1), Strings{"10:0:3"});
  EXPECT_EQ(1u, countLine("handleSendBlobMessage"));
  EXPECT_EQ(1u, countLine("Send response RESPONSE 10"));
}

TEST_F(SdkClientTest, BlobOfAnUnknownTypeIsForNobody) {
  mClient = join(Type::LCE);
  forgetNotes();
  ASSERT_TRUE(mDaemon.sendBlob(1, 99, {1}));
  ASSERT_TRUE(mDaemon.sendBlob(1, orbsim::kSdkTypeLce, {1, 2}));
  EXPECT_EQ(waitForNotes(1), Strings{"9:0:2"});
  size_t found = 0;
  for (const recording::Line& line : recording::lines()) {
    if (line.text == "OrbSdkClientType 0 is not registered with this client. Should never occur!") {
      EXPECT_EQ(6, line.priority);
      EXPECT_FALSE(line.hasTag);
      ++found;
    }
  }
  EXPECT_EQ(1u, found);
}

TEST_F(SdkClientTest, PayloadTooShortForATypeIsDropped) {
  mClient = join(Type::LCE);
  forgetNotes();
  for (size_t size = 0; size < 4; ++size) {
    ASSERT_TRUE(mDaemon.sendFrame(1, mDaemon.headerFor(1, 5, size), Blob(size, 7)));
  }
  ASSERT_TRUE(mDaemon.sendBlob(1, orbsim::kSdkTypeLce, {}));
  EXPECT_EQ(waitForNotes(1), Strings{"9:0:0"});
  EXPECT_EQ(5u, countLine("handleSendBlobMessage"));
}

TEST_F(SdkClientTest, SendingForATypeWithoutSessionFails) {
  mClient = join(Type::LCE);
  EXPECT_FALSE(mClient->isConnected(Type::LLI));
  EXPECT_FALSE(mClient->sendBlobToService(Type::LLI, {1}));
  EXPECT_EQ(1u, countLine("mOrbIpcSession for OrbSdkClientType 11 is not found"));
}

TEST_F(SdkClientTest, LostConnectionIsToldToAllTypesInAscendingOrder) {
  mClient = join(Type::LLE);
  join(Type::LCE);
  waitForNotes(3);  // LCE was notified when it joined and when it was connected
  forgetNotes();
  ASSERT_TRUE(mDaemon.closeSession(1));
  EXPECT_EQ(waitForNotes(2), (Strings{"9:2:0", "10:2:0"}));
  EXPECT_EQ(1u, countLine("handleConnectionStatus: 0 type: 10"));
  EXPECT_TRUE(mClient->isConnected(Type::LCE));
  EXPECT_FALSE(mClient->isConnected(Type::LLE));
  mClient->postEvent(request(Type::LLE));
  ASSERT_TRUE(mDaemon.waitForFrames(3));
  EXPECT_EQ(1u, countLine("IPC type: 106")) << "the session connects again, no new one is made";
}

TEST_F(SdkClientTest, RefusedConnectionIsToldAndTheBlobDropped) {
  mDaemon.setHandshake([](int, uint32_t) { return false; });
  mClient = SdkClient::getInstance(Type::LCE, noting(Type::LCE), request(Type::LCE, {1}));
  EXPECT_EQ(waitForNotes(1), Strings{"9:2:0"});
  ASSERT_TRUE(waitForLine("IsConnected: 0"));
  EXPECT_EQ(1u, countLine("handleConnectionStatus: 0 type: 9"));
  mDaemon.setHandshake({});
  mClient->postEvent(request(Type::LCE, {1, 2}));
  ASSERT_TRUE(mDaemon.waitForFrames(1));
  EXPECT_EQ((Blob{1, 2}), mDaemon.frames()[0].blob());
}

}  // namespace
