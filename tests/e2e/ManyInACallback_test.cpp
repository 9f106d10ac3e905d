// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// An application that enables and disables many times without leaving its callback.
#include <algorithm>

#include "AllServicesFixture.h"

namespace allservices {
namespace {

using application::Event;
using application::state;

class ManyInACallback : public AllServicesTest {
 protected:
  void TearDown() override {
    AllServicesTest::TearDown();
    state().clear();
  }
  // Enables with a status callback and runs @p action inside the first call of it.
  void inCallback(const ServiceOps& service, const std::function<void()>& action) {
    ASSERT_EQ(1, service.enableWith(application::onStatus));
    awaitSession(service);
    state().inNext(Event::Status, [&] { action(); });
    send(service, status(1));
    ASSERT_TRUE(state().waitDone());
  }
};

TEST_F(ManyInACallback, OneClosingThreadIsEnough) {
  constexpr int kTimes = 300;
  for (const ServiceOps& service : kServices) {
    size_t most = 0;
    int refused = 0;
    inCallback(service, [&] {
      for (int i = 0; i < kTimes; ++i) {
        refused += service.disable() == 1 ? 0 : 1;
        most = std::max(most, threadsNamed("orb-closer"));
        refused += service.enableWith(application::onStatus) == 1 ? 0 : 1;
      }
    });
    EXPECT_EQ(0, refused) << service.name;
    EXPECT_LE(most, 1u) << service.name;
    ASSERT_EQ(1, service.disable()) << service.name;
    EXPECT_TRUE(libraryThreadsEnd());
    EXPECT_TRUE(comeToBe(0, "orb-closer"));
  }
}

}  // namespace
}  // namespace allservices
