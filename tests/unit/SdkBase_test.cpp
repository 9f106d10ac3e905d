// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "SdkBase.h"

#include <gtest/gtest.h>

#include <string>

#include "FewDescriptors.h"
#include "RecordingPlatform.h"
#include "SdkClient.h"

namespace {

using Strings = std::vector<std::string>;

// The callbacks are plain functions; everything runs on the test's thread here.
Strings gCalls;
void onStatus(status_e status) { gCalls.push_back("status " + std::to_string(status)); }
void onV2(status_v2_e status) { gCalls.push_back("v2 " + std::to_string(status)); }

class Service : public SdkBase {
 public:
  void blobListener(SdkClientBase::SdkStatus, const std::vector<uint8_t>&) override {}
  void setCallbacks(StatusCallback status, StatusV2Callback v2) {
    mStatusIndCb.set(status);
    mBaseStatusV2Cb.set(v2);
  }
};

// An event manager can be created, but no queue for the SDK client.
struct NoClientToBeHad {
  const FewDescriptors few{3};
};

class SdkBaseTest : public ::testing::Test {
 protected:
  void SetUp() override {
    recording::clear();
    gCalls.clear();
  }
  void TearDown() override { disable(); }

  // A cleanup event makes no connection, so no daemon is needed.
  static std::shared_ptr<SdkClientEvent> cleanup() {
    return std::make_shared<SdkClientEvent>(OrbSdkClientType::LCE, std::vector<uint8_t>(), true);
  }
  SdkBase::Created create(const SdkBase::Change& change = {}) {
    return mService->createSdkInstance(
        OrbSdkClientType::LCE, [](SdkClientBase::SdkStatus, const std::vector<uint8_t>&) {},
        nullptr, cleanup(), change);
  }
  bool disable() {
    const auto begun = mService->beginDisable();
    if (begun) SdkBase::finishDisable(begun);
    return begun != nullptr;
  }

  const std::shared_ptr<Service> mService = std::make_shared<Service>();
};

TEST_F(SdkBaseTest, HasNoClientAtFirst) {
  EXPECT_FALSE(mService->hasClient());
  EXPECT_FALSE(mService->accept({}, cleanup()));
  EXPECT_FALSE(disable());
}

TEST_F(SdkBaseTest, RefusedCallChangesNothing) {
  bool changed = false;
  const SdkBase::Change change = [&] { changed = true; };
  EXPECT_FALSE(mService->accept(change));
  ASSERT_EQ(SdkBase::Created::Yes, create());
  ASSERT_TRUE(disable());
  EXPECT_FALSE(mService->accept(change, cleanup()));
  EXPECT_EQ(SdkBase::Created::Disabled, create(change));
  EXPECT_FALSE(changed);
}

TEST_F(SdkBaseTest, AcceptedCallChangesWhatItStores) {
  int changes = 0;
  const SdkBase::Change change = [&] { ++changes; };
  ASSERT_EQ(SdkBase::Created::Yes, create(change));
  EXPECT_EQ(1, changes);
  EXPECT_TRUE(mService->accept(change));
  EXPECT_EQ(SdkBase::Created::Yes, create(change));
  EXPECT_EQ(3, changes);
}

TEST_F(SdkBaseTest, ObtainsAClientAndKeepsIt) {
  EXPECT_EQ(SdkBase::Created::Yes, create());
  EXPECT_TRUE(mService->hasClient());
  EXPECT_EQ(SdkBase::Created::Yes, create());
  EXPECT_TRUE(recording::hasEndingWith(" SdkClient new Instance created"));
  EXPECT_FALSE(recording::hasEndingWith(" Instance is available and already running, post event."));
  EXPECT_TRUE(gCalls.empty());
}

TEST_F(SdkBaseTest, FailureGoesToTheSecondGenerationSlotFirst) {
  const NoClientToBeHad nothing;
  mService->setCallbacks(onStatus, onV2);
  EXPECT_EQ(SdkBase::Created::No, create());
  EXPECT_EQ(gCalls, Strings{"v2 -3"});
  EXPECT_FALSE(mService->hasClient());
}

TEST_F(SdkBaseTest, FailureGoesToTheStatusCallbackWithoutSecondGenerationSlot) {
  const NoClientToBeHad nothing;
  mService->setCallbacks(onStatus, nullptr);
  EXPECT_EQ(SdkBase::Created::No, create());
  EXPECT_EQ(gCalls, Strings{"status 2"});
}

TEST_F(SdkBaseTest, FailureWithoutCallbacksIsNotReported) {
  const NoClientToBeHad nothing;
  EXPECT_EQ(SdkBase::Created::No, create());
  EXPECT_TRUE(gCalls.empty());
}

TEST_F(SdkBaseTest, FailedCreationMayBeTriedAgain) {
  {
    const NoClientToBeHad nothing;
    EXPECT_EQ(SdkBase::Created::No, create());
  }
  EXPECT_EQ(SdkBase::Created::Yes, create());
}

TEST_F(SdkBaseTest, DisabledObjectTakesNothingMore) {
  ASSERT_EQ(SdkBase::Created::Yes, create());
  EXPECT_TRUE(disable());
  EXPECT_FALSE(mService->hasClient());
  EXPECT_FALSE(mService->accept({}, cleanup()));
  EXPECT_EQ(SdkBase::Created::Disabled, create());
  EXPECT_FALSE(disable());
}

TEST_F(SdkBaseTest, LastDisableEndsTheClient) {
  ASSERT_EQ(SdkBase::Created::Yes, create());
  ASSERT_TRUE(disable());
  EXPECT_TRUE(recording::hasEndingWith(" cleaning mInstance"));
  EXPECT_TRUE(recording::waitFor([](const recording::Line& line) {
    return line.text.find("|OrbSdk|SdkClient::~SdkClient:") == 0;
  }));
}

}  // namespace
