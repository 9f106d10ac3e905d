// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <string>

#include "FewDescriptors.h"
#include "ServiceFixture.h"
#include "WireBytes.h"

// Results, refusals and log lines of the exported functions that all services have. Each service's
// *Api_test.cpp instantiates the suite.
namespace servicetest {

// Enough descriptors for an event manager, one too few for the SDK client's queue.
constexpr size_t kManagerDescriptors = 3;

// The requests of a service except its status, the messages that answer them, and the callbacks'
// results. Each service's *Api_test.cpp defines its own.
template <class S>
struct Asked;

template <class S>
class ServiceApi : public ServiceTest<S> {
 protected:
  LogLines linesOfRequests() {
    LogLines result;
    for (const Request& request : S::requests()) {
      const LogLines own = this->linesOf(request.function);
      result.insert(result.end(), own.begin(), own.end());
    }
    return result;
  }
  void sendAnswers() {
    for (const auto& message : Asked<S>::answers()) this->send(message);
  }
  // Both generations are enabled, but the client could not be created.
  void enableWithoutClient() {
    const FewDescriptors few(kManagerDescriptors);
    EXPECT_EQ(0, S::enable(this->onStatus));
    EXPECT_EQ(-1, S::create(this->onV2));
  }
};

TYPED_TEST_SUITE_P(ServiceApi);

TYPED_TEST_P(ServiceApi, DisableBeforeEnableIsRefused) {
  EXPECT_EQ(0, TypeParam::disable());
  EXPECT_EQ(this->lines(), (LogLines{{TypeParam::kDisable, "Disable"},
                                     {TypeParam::kDisable, "Failed to get SDK instance."}}));
  EXPECT_TRUE(this->calls().empty());
}

TYPED_TEST_P(ServiceApi, DestroyBeforeCreateIsRefused) {
  EXPECT_EQ(-1, TypeParam::destroy());
  EXPECT_EQ(this->lines(), (LogLines{{TypeParam::kDestroy, TypeParam::kDestroying},
                                     {TypeParam::kDestroy, "Failed to get SDK instance."}}));
  EXPECT_TRUE(this->calls().empty());
}

TYPED_TEST_P(ServiceApi, EnableWithoutCallbackIsRefusedBeforeAnythingIsMade) {
  EXPECT_EQ(0, TypeParam::enable(nullptr));
  EXPECT_EQ(this->lines(), (LogLines{{TypeParam::kEnable, "Enable"},
                                     {TypeParam::kEnable, "Status ind function null"}}));
  EXPECT_EQ(0u, this->daemon().totals().connections);
}

TYPED_TEST_P(ServiceApi, CreateWithoutCallbackIsRefusedBeforeAnythingIsMade) {
  EXPECT_EQ(-1, TypeParam::create(nullptr));
  EXPECT_EQ(this->lines(), (LogLines{{TypeParam::kCreate, "Create"},
                                     {TypeParam::kCreate, TypeParam::kCreateWithoutCallback}}));
  EXPECT_EQ(0u, this->daemon().totals().connections);
}

TYPED_TEST_P(ServiceApi, RequestsBeforeEnableAreRefusedWhateverTheirArguments) {
  LogLines expected;
  for (const Request& request : TypeParam::requests()) {
    EXPECT_EQ(-5, request.valid()) << request.function;
    expected.emplace_back(request.function, "Failed to get SDK instance");
    if (request.invalid == nullptr) continue;
    EXPECT_EQ(-5, request.invalid()) << request.function;
    expected.emplace_back(request.function, "Failed to get SDK instance");
  }
  EXPECT_EQ(this->lines(), expected);
}

TYPED_TEST_P(ServiceApi, EnableAndDisableSayYesAndLogTheObjectsLife) {
  const std::string name = TypeParam::kName;
  this->enable();
  EXPECT_EQ(1, TypeParam::disable());
  const LogLine gone{"~" + name, "~" + name + " called"};
  ASSERT_TRUE(this->waitForLine(gone));
  EXPECT_EQ(this->linesOf(TypeParam::kEnable), (LogLines{{TypeParam::kEnable, "Enable"}}));
  EXPECT_EQ(this->linesOf(TypeParam::kDisable), (LogLines{{TypeParam::kDisable, "Disable"}}));
  EXPECT_EQ(this->linesOf(name), (LogLines{{name, name + " ctor"}}));
  EXPECT_EQ(this->linesOf("~" + name), (LogLines{gone}));
  for (const Request& request : TypeParam::requests()) {
    EXPECT_EQ(-5, request.valid()) << request.function;
  }
  EXPECT_EQ(0, TypeParam::disable());
}

TYPED_TEST_P(ServiceApi, CreateAndDestroySayYesInTheirOwnNumbers) {
  EXPECT_EQ(0, TypeParam::create(this->onV2));
  EXPECT_EQ(0, TypeParam::destroy());
  EXPECT_EQ(this->linesOf(TypeParam::kCreate), (LogLines{{TypeParam::kCreate, "Create"}}));
  EXPECT_EQ(this->linesOf(TypeParam::kDestroy),
            (LogLines{{TypeParam::kDestroy, TypeParam::kDestroying}}));
  EXPECT_EQ(-1, TypeParam::destroy());
}

TYPED_TEST_P(ServiceApi, EitherGenerationDisablesWhatTheOtherEnabled) {
  EXPECT_EQ(1, TypeParam::enable(this->onStatus));
  EXPECT_EQ(0, TypeParam::destroy());
  EXPECT_EQ(0, TypeParam::create(this->onV2));
  EXPECT_EQ(1, TypeParam::disable());
}

TYPED_TEST_P(ServiceApi, InvalidRequestsAreRefusedSilentlyAndSendNothing) {
  this->enableQuietly();
  for (const Request& request : TypeParam::requests()) {
    if (request.invalid == nullptr) continue;
    EXPECT_EQ(-2, request.invalid()) << request.function;
  }
  EXPECT_TRUE(this->linesOfRequests().empty());
  ASSERT_EQ(1, TypeParam::disable());
  ASSERT_TRUE(this->daemon().waitForSessionsClosed(1));
  const auto frames = this->daemon().frames();
  ASSERT_EQ(2u, frames.size());
  EXPECT_EQ(kEnable, frames[0].blob());
  EXPECT_EQ(kDisable, frames[1].blob());
}

TYPED_TEST_P(ServiceApi, AcceptedRequestsAreSilent) {
  this->enableQuietly();
  for (const Request& request : TypeParam::requests()) {
    EXPECT_LE(0, request.valid()) << request.function;
  }
  EXPECT_TRUE(this->linesOfRequests().empty());
}

TYPED_TEST_P(ServiceApi, EnableAgainReplacesTheCallbackAndAsksAgain) {
  this->enable();
  ASSERT_EQ(1, TypeParam::enable(this->onOtherStatus));
  ASSERT_TRUE(this->daemon().waitForFrames(2));
  EXPECT_EQ(this->frame(0).bytes(), this->frame(1).bytes());
  EXPECT_EQ(1u, this->linesOf(TypeParam::kName).size());
  EXPECT_EQ(0, TypeParam::enable(nullptr)) << "and a refused one replaces nothing";
  this->send(statusMessage<TypeParam>(1));
  EXPECT_EQ(this->waitForCalls(1), (typename TestFixture::CallList{{"other", STATUS_SUCCESS, {}}}));
}

TYPED_TEST_P(ServiceApi, RefusedCallsLeaveTheCallbacksOfEarlierOnes) {
  this->enable();
  ASSERT_NO_FATAL_FAILURE(Asked<TypeParam>::ask());
  EXPECT_EQ(0, TypeParam::enable(nullptr));
  for (const Request& request : TypeParam::requests()) {
    if (request.invalid == nullptr) continue;
    EXPECT_EQ(-2, request.invalid()) << request.function;
  }
  this->sendAnswers();
  EXPECT_EQ(this->settle(), Asked<TypeParam>::calls());
}

TYPED_TEST_P(ServiceApi, EnableAfterDisableStartsAfresh) {
  this->enableBoth();
  ASSERT_NO_FATAL_FAILURE(Asked<TypeParam>::ask());
  ASSERT_EQ(1, TypeParam::disable());
  ASSERT_EQ(1, TypeParam::enable(this->onStatus));
  ASSERT_TRUE(this->daemon().waitForFrame([](const Frame& frame) { return frame.sessionId == 2; }));
  this->mSession = 2;
  this->sendAnswers();
  EXPECT_TRUE(this->settle().empty());
  EXPECT_EQ(1u, this->calls().size()) << "the second generation's callback is forgotten";
}

TYPED_TEST_P(ServiceApi, EnableThatGetsNoClientReportsInternalErrorBeforeItReturns) {
  {
    const FewDescriptors few(kManagerDescriptors);
    EXPECT_EQ(0, TypeParam::enable(this->onStatus));
    EXPECT_EQ(this->calls(),
              (typename TestFixture::CallList{{"status", STATUS_INTERNAL_ERROR, {}}}));
  }
  this->enable();  // creates the object's client, so that it ends with the test
}

// LCE's callback is not notified; only the result shows the failure.
TYPED_TEST_P(ServiceApi, CreateThatGetsNoClientTellsItsCallbackUnlessItIsLce) {
  const typename TestFixture::CallList none;
  const typename TestFixture::CallList told = {{"v2", STATUS_V2_INTERNAL_ERROR, {}}};
  {
    const FewDescriptors few(kManagerDescriptors);
    EXPECT_EQ(-1, TypeParam::create(this->onV2));
    EXPECT_EQ(this->calls(), TypeParam::kCreateTells ? told : none);
  }
  this->enable();
}

TYPED_TEST_P(ServiceApi, CreateThatGetsNoClientTellsOneOfTwoCallbacks) {
  const typename TestFixture::CallList second = {{"v2", STATUS_V2_INTERNAL_ERROR, {}}};
  const typename TestFixture::CallList first = {{"status", STATUS_INTERNAL_ERROR, {}}};
  {
    const FewDescriptors few(kManagerDescriptors);
    EXPECT_EQ(0, TypeParam::enable(this->onStatus));
    this->clearCalls();
    EXPECT_EQ(-1, TypeParam::create(this->onV2));
    EXPECT_EQ(this->calls(), TypeParam::kCreateTells ? second : first);
  }
  this->enable();
}

TYPED_TEST_P(ServiceApi, WithoutClientRequestsAreRefusedAndDisableReportsToBoth) {
  this->enableWithoutClient();
  this->forgetAll();
  const std::string text = "Failed to get SDK client instance";
  LogLines expected;
  for (const Request& request : TypeParam::requests()) {
    EXPECT_EQ(-5, request.valid()) << request.function;
    expected.emplace_back(request.function, text);
    if (!request.invalid) continue;
    EXPECT_EQ(-5, request.invalid()) << request.function;
    expected.emplace_back(request.function, text);
  }
  EXPECT_EQ(0, TypeParam::disable());
  EXPECT_EQ(-1, TypeParam::destroy());
  for (const LogLine& line : LogLines{{TypeParam::kDisable, "Disable"},
                                      {TypeParam::kDisable, text + "."},
                                      {TypeParam::kDestroy, TypeParam::kDestroying},
                                      {TypeParam::kDestroy, text + "."}}) {
    expected.push_back(line);
  }
  EXPECT_EQ(this->lines(), expected);
  EXPECT_EQ(this->calls(), (typename TestFixture::CallList{{"status", STATUS_INTERNAL_ERROR, {}},
                                                           {"v2", STATUS_V2_INTERNAL_ERROR, {}},
                                                           {"status", STATUS_INTERNAL_ERROR, {}},
                                                           {"v2", STATUS_V2_INTERNAL_ERROR, {}}}));
  this->enable();
}

TYPED_TEST_P(ServiceApi, LostConnectionIsReportedToBothAndTheNextEnableFindsTheDaemonAgain) {
  this->enableBothQuietly();
  this->daemon().stop();
  const typename TestFixture::CallList down{{"status", STATUS_SERVICE_DOWN, {}},
                                            {"v2", STATUS_V2_SERVICE_DOWN, {}}};
  EXPECT_EQ(this->waitForCalls(2), down);
  EXPECT_EQ(this->linesOf(kBlobListener), (LogLines{this->entered()}));
  this->daemon().clearRecords();
  ASSERT_TRUE(this->daemon().start()) << this->daemon().error();
  this->enable();
  EXPECT_EQ(this->settle(), down);
}

TYPED_TEST_P(ServiceApi, RefusedHandshakeIsOneServiceDownAndTheNextRequestTriesAgain) {
  this->daemon().setHandshake([](int, uint32_t) { return false; });
  ASSERT_EQ(1, TypeParam::enable(this->onStatus));
  const typename TestFixture::CallList down{{"status", STATUS_SERVICE_DOWN, {}}};
  EXPECT_EQ(this->waitForCalls(1), down);
  this->daemon().setHandshake({});
  this->enable();
  EXPECT_EQ(1u, this->daemon().frames().size()) << "the first enable message was dropped";
  EXPECT_EQ(this->calls(), down);
}

REGISTER_TYPED_TEST_SUITE_P(ServiceApi, DisableBeforeEnableIsRefused, DestroyBeforeCreateIsRefused,
                            EnableWithoutCallbackIsRefusedBeforeAnythingIsMade,
                            CreateWithoutCallbackIsRefusedBeforeAnythingIsMade,
                            RequestsBeforeEnableAreRefusedWhateverTheirArguments,
                            EnableAndDisableSayYesAndLogTheObjectsLife,
                            CreateAndDestroySayYesInTheirOwnNumbers,
                            EitherGenerationDisablesWhatTheOtherEnabled,
                            InvalidRequestsAreRefusedSilentlyAndSendNothing,
                            AcceptedRequestsAreSilent, EnableAgainReplacesTheCallbackAndAsksAgain,
                            RefusedCallsLeaveTheCallbacksOfEarlierOnes,
                            EnableAfterDisableStartsAfresh,
                            EnableThatGetsNoClientReportsInternalErrorBeforeItReturns,
                            CreateThatGetsNoClientTellsItsCallbackUnlessItIsLce,
                            CreateThatGetsNoClientTellsOneOfTwoCallbacks,
                            WithoutClientRequestsAreRefusedAndDisableReportsToBoth,
                            LostConnectionIsReportedToBothAndTheNextEnableFindsTheDaemonAgain,
                            RefusedHandshakeIsOneServiceDownAndTheNextRequestTriesAgain);

}  // namespace servicetest
