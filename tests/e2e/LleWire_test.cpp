// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The bytes that LLE sends to the daemon.
#include "LleFixture.h"
#include "ServiceWireSuite.h"

namespace lletest {
namespace {

INSTANTIATE_TYPED_TEST_SUITE_P(Lle, ServiceWire, LleNames, ServiceName);

class LleWire : public LleTest {
 protected:
  static Blob frameBytes(const Blob& blob) { return servicetest::frameBytes<LleNames>(1, blob); }
};

TEST_F(LleWire, EnableIsThisFrameByteForByte) {
  enable();
  EXPECT_EQ((Blob{106,  0,    0,    0,    0,    0,   0, 0,  // source: this service's endpoint
                  1,    0,    0,    0,    0,    0,   0, 0,  // destination: the daemon
                  5,    0,    0,    0,    0,    0,   0, 0,  // message
                  0,    0,    0,    0,    0,    0,   0, 0,  // subsystem
                  1,    0,    0,    0,    0,    0,   0, 0,  // session
                  10,   0,    0,    0,    0,    0,   0, 0,  // length of what follows
                  8,    0,    0,    0,                      // service number
                  0x1a, 0x04, 0x0a, 0x02, 0x08, 0x01}),     // the message itself
            frame(0).bytes());
}

TEST_F(LleWire, CriteriaCarryTheirValueAndNoTransactionId) {
  enable();
  const struct {
    uint32_t value;
    Blob blob;
  } rows[] = {
      {0, {0x08, 0x02, 0x1a, 0x02, 0x12, 0x00}},
      {1, {0x08, 0x02, 0x1a, 0x04, 0x12, 0x02, 0x08, 0x01}},
      {300, {0x08, 0x02, 0x1a, 0x05, 0x12, 0x03, 0x08, 0xac, 0x02}},
      {4294967295, {0x08, 0x02, 0x1a, 0x08, 0x12, 0x06, 0x08, 0xff, 0xff, 0xff, 0xff, 0x0f}},
  };
  size_t index = 1;
  for (const auto& row : rows) {
    ASSERT_EQ(0, lleSetReportingCriteria(row.value));
    EXPECT_EQ(frameBytes(row.blob), frame(index).bytes()) << row.value;
    ++index;
  }
}

TEST_F(LleWire, GetLastEstimationReportIsAnEmptyMember) {
  enable();
  ASSERT_EQ(0, lleGetLastEstimationReport(onLast));
  EXPECT_EQ(frameBytes(kGetLast), frame(1).bytes());
}

TEST_F(LleWire, RegisteringForReportsSendsNothing) {
  enable();
  ASSERT_EQ(0, lleRegEstimationReports(onReport));
  ASSERT_EQ(0, lleGetLastEstimationReport(onLast));
  EXPECT_EQ(frameBytes(kGetLast), frame(1).bytes());
}

TEST_F(LleWire, RequestsMadeBeforeTheDaemonIsThereArriveInOrder) {
  daemon().stop();
  ASSERT_EQ(1, orb_lle_enable(onStatus));
  ASSERT_EQ(0, lleGetLastEstimationReport(onLast));
  ASSERT_EQ(0, lleSetReportingCriteria(1));
  ASSERT_TRUE(daemon().start()) << daemon().error();
  EXPECT_EQ(frameBytes({0x08, 0x02, 0x1a, 0x04, 0x12, 0x02, 0x08, 0x01}), frame(2).bytes());
  EXPECT_EQ(frameBytes(kEnable), frame(0).bytes());
  EXPECT_EQ(frameBytes(kGetLast), frame(1).bytes());
}

}  // namespace
}  // namespace lletest
