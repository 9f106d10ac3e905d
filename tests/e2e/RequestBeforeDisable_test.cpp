// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// A callback on the worker sends a request, disables its service and then runs for a long time.
#include <chrono>

#include "AllServicesFixture.h"

namespace allservices {
namespace {

using application::Event;
using application::state;

TEST_F(AllServicesTest, RequestIsSentHoweverLongTheCallbackThatDisablesTakes) {
  ASSERT_EQ(1, kLli.enableWith(application::onStatus));
  awaitSession(kLli);
  const size_t before = daemon().totals().frames;
  int64_t requested = -1;
  int disabled = -1;
  bool early = true;
  state().inNext(Event::Status, [&] {
    requested = kLli.requests().front().valid();
    disabled = kLli.disable();
    // Longer than the time in which the worker sends queued requests.
    early = daemon().waitForFrames(before + 1, std::chrono::milliseconds(400));
  });
  daemon().setHandshake([](int, uint32_t) { return false; });
  ASSERT_EQ(1, kLle.enable());  // the failure is LLI's service down, reported on the worker
  ASSERT_TRUE(state().waitDone());
  EXPECT_EQ(0, requested);
  EXPECT_EQ(1, disabled);
  EXPECT_FALSE(early) << "the rest is done after the callback";
  ASSERT_TRUE(daemon().waitForSessionsClosed(1));
  EXPECT_EQ(before + 2, daemon().totals().frames) << "the request, then the disable message";
  state().clear();
}

}  // namespace
}  // namespace allservices
