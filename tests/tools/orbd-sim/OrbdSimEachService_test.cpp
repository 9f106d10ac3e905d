// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// What all services of the daemon stand-in do alike.

#include "OrbdSimClient.h"

namespace orbsimtest {
namespace {

// Numbers that mean the same for each.
constexpr int kStatusInd = 0;
constexpr int kSuccess = 1;
constexpr int kInvalidArg = 2;
constexpr int kNotSupported = 4;

bool waitForEnabled(Daemon& daemon, const LceProto::ServiceMsg&, bool enabled) {
  return daemon.waitForLceState(1, [=](const auto& state) { return state.enabled == enabled; });
}
bool waitForEnabled(Daemon& daemon, const LleProto::ServiceMsg&, bool enabled) {
  return daemon.waitForLleState(1, [=](const auto& state) { return state.enabled == enabled; });
}
bool waitForEnabled(Daemon& daemon, const LliProto::ServiceMsg&, bool enabled) {
  return daemon.waitForLliState(1, [=](const auto& state) { return state.enabled == enabled; });
}

template <class Request>
class OrbdSimEachService : public OrbdSimTest {
 protected:
  void SetUp() override {
    OrbdSimTest::SetUp();
    mClient = std::make_unique<Client>(path(), Wire<Request>::kPid);
    mClient->handshake();
  }
  Client& client() { return *mClient; }
  int statusOf(const Request& request) {
    client().send(request);
    return readStatus();
  }
  int readStatus() {
    const auto answer = parse<Request>(client().readFrame());
    EXPECT_EQ(kStatusInd, answer.event_id());
    EXPECT_TRUE(answer.data().has_status_msg());
    return answer.data().status_msg().status();
  }
  bool waitForEnabled(bool enabled) {
    return orbsimtest::waitForEnabled(daemon(), Request(), enabled);
  }

 private:
  std::unique_ptr<Client> mClient;
};

struct PackageName {
  template <class Request>
  static std::string GetName(int) {
    const std::string name = Request().GetTypeName();
    return name.substr(0, name.find("Proto"));
  }
};
using Requests = ::testing::Types<LceProto::ServiceMsg, LleProto::ServiceMsg, LliProto::ServiceMsg>;
TYPED_TEST_SUITE(OrbdSimEachService, Requests, PackageName);

TYPED_TEST(OrbdSimEachService, EnableAndDisableAreAnsweredWithSuccess) {
  EXPECT_EQ(kSuccess, this->statusOf(enable<TypeParam>(true)));
  ASSERT_TRUE(this->waitForEnabled(true));
  EXPECT_EQ(kSuccess, this->statusOf(enable<TypeParam>(false)));
  ASSERT_TRUE(this->waitForEnabled(false));
}

TYPED_TEST(OrbdSimEachService, AnswersAreFramesFromTheDaemonToTheClientsEndpoint) {
  this->client().send(enable<TypeParam>(true));
  const Frame answer = this->client().readFrame();
  EXPECT_EQ(orbsim::kDaemonProcessId, answer.header.source);
  EXPECT_EQ(Wire<TypeParam>::kPid, answer.header.destination);
  EXPECT_EQ(orbsim::kSendBlobMessageId, answer.header.messageId);
  EXPECT_EQ(0, answer.header.subsystemId);
  EXPECT_EQ(1u, answer.header.sessionId);
  EXPECT_EQ((Blob{Wire<TypeParam>::kSdkType, 0, 0, 0, 0x1A, 4, 0x0A, 2, 8, 1}), answer.payload);
}

TYPED_TEST(OrbdSimEachService, UnknownRequestIsNotSupported) {
  TypeParam request;
  request.set_event_id(static_cast<decltype(request.event_id())>(99));
  EXPECT_EQ(kNotSupported, this->statusOf(request));
}

TYPED_TEST(OrbdSimEachService, BlobThatCannotBeReadIsAnInvalidArgument) {
  this->client().sendPayload({Wire<TypeParam>::kSdkType, 0, 0, 0, 0x1A, 0x7F});
  EXPECT_EQ(kInvalidArg, this->readStatus());
}

}  // namespace
}  // namespace orbsimtest
