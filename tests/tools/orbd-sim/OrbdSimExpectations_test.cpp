// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// Which clients count as reconnected. The class is called directly, so that the test can choose
// process ids.

#include <gtest/gtest.h>

#include "Expectations.h"

namespace {

using namespace std::chrono_literals;
using orbsim::Expectation;
using orbsim::Expectations;
using orbsim::SessionView;

constexpr uint64_t kLce = 105;
constexpr uint64_t kLle = 106;

class OrbdSimReconnection : public ::testing::Test {
 protected:
  static std::vector<Expectation> reconnects() {
    Expectation expectation;
    expectation.kind = Expectation::Kind::kReconnects;
    expectation.place = "/expect/0";
    return {expectation};
  }
  void begins(int process, uint64_t endpoint) { told({0, process, endpoint}, true); }
  void ends(int process, uint64_t endpoint) { told({0, process, endpoint}, false); }
  bool met() const { return mExpectations.failures(1s, /*atEnd=*/true).empty(); }

 private:
  void told(const SessionView& session, bool open) { mExpectations.session(session, open, 1s); }

  Expectations mExpectations{reconnects()};
};

TEST_F(OrbdSimReconnection, FirstConnectionOfAnotherClientIsNone) {
  begins(100, kLce);
  ends(100, kLce);
  begins(200, kLle);
  EXPECT_FALSE(met());
  begins(100, kLce);
  EXPECT_TRUE(met());
}

TEST_F(OrbdSimReconnection, ProcessThatComesBackForAnotherServiceIsOne) {
  begins(100, kLce);
  ends(100, kLce);
  begins(100, kLle);
  EXPECT_TRUE(met());
}

TEST_F(OrbdSimReconnection, ApplicationThatWasStartedAgainIsOne) {
  begins(100, kLce);
  ends(100, kLce);
  begins(200, kLce);
  EXPECT_TRUE(met());
}

TEST_F(OrbdSimReconnection, ProcessesWithoutANumberAreNotTheSame) {
  begins(0, kLce);
  ends(0, kLce);
  begins(0, kLle);
  EXPECT_FALSE(met());
}

TEST_F(OrbdSimReconnection, ClientThatIsBackBeforeItsEndWasNoticedIsOne) {
  begins(100, kLce);
  begins(200, kLce);
  EXPECT_FALSE(met());
  begins(100, kLce);
  EXPECT_TRUE(met());
}

}  // namespace
