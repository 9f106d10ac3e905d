// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The bytes that LLI sends to the daemon.
#include "LliFixture.h"
#include "ServiceWireSuite.h"

namespace llitest {
namespace {

INSTANTIATE_TYPED_TEST_SUITE_P(Lli, ServiceWire, LliNames, ServiceName);

class LliWire : public LliTest {
 protected:
  static Blob frameBytes(const Blob& blob) { return servicetest::frameBytes<LliNames>(1, blob); }
};

const Blob kRegister{0x08, 0x01, 0x1a, 0x04, 0x12, 0x02, 0x08, 0x01};

TEST_F(LliWire, RegistrationIsThisFrameByteForByte) {
  enable();
  ASSERT_EQ(0, lliRegLinkInterruptInd(onInterrupt));
  EXPECT_EQ((Blob{107,  0,    0,    0,    0,    0,    0,    0,       // source: its endpoint
                  1,    0,    0,    0,    0,    0,    0,    0,       // destination: the daemon
                  5,    0,    0,    0,    0,    0,    0,    0,       // message
                  0,    0,    0,    0,    0,    0,    0,    0,       // subsystem
                  1,    0,    0,    0,    0,    0,    0,    0,       // session
                  12,   0,    0,    0,    0,    0,    0,    0,       // length of what follows
                  9,    0,    0,    0,                               // service number
                  0x08, 0x01, 0x1a, 0x04, 0x12, 0x02, 0x08, 0x01}),  // the message itself
            frame(1).bytes());
  EXPECT_EQ(frameBytes(kRegister), frame(1).bytes());
}

TEST_F(LliWire, RequestsMadeBeforeTheDaemonIsThereArriveInOrder) {
  daemon().stop();
  ASSERT_EQ(1, orb_lli_enable(onStatus));
  ASSERT_EQ(0, lliRegLinkInterruptInd(onInterrupt));
  ASSERT_TRUE(daemon().start()) << daemon().error();
  EXPECT_EQ(frameBytes(kRegister), frame(1).bytes());
  EXPECT_EQ(frameBytes(kEnable), frame(0).bytes());
}

}  // namespace
}  // namespace llitest
