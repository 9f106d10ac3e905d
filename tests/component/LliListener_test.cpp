// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The LLI object's listener, called directly with all notifications of the SDK client, and every
// log line of LLI with its number.
#include "Lli.h"
#include "LliFixture.h"
#include "ServiceListenerSuite.h"

namespace servicetest {
template <>
struct ObjectOf<llitest::LliNames> {
  using Type = Lli;
};
}  // namespace servicetest

namespace llitest {
namespace {

INSTANTIATE_TYPED_TEST_SUITE_P(Lli, ServiceListener, LliNames, ServiceName);
INSTANTIATE_TYPED_TEST_SUITE_P(Lli, BareServiceObject, LliNames, ServiceName);

using LliLines = LineSources<LliNames>;

void wantIndications() { EXPECT_EQ(0, lliRegLinkInterruptInd(onInterrupt)); }

TEST_F(LliLines, ApiLinesAreFixed) {
  const auto request = [] { lliRegLinkInterruptInd(onInterrupt); };
  expectLines({
      {"|Lli|Lli::orb_lli_enable:20 Enable", enableWithoutCallback},
      {"|Lli|Lli::orb_lli_enable:22 Status ind function null", enableWithoutCallback},
      {"|Lli|Lli::orb_lli_enable:29 Failed to get SDK instance.", enableWithoutMemory},
      {"|Lli|Lli::orb_lli_disable:53 Disable", disable},
      {"|Lli|Lli::orb_lli_disable:56 Failed to get SDK instance.", disable},
      {"|Lli|Lli::orb_lli_disable:61 Failed to get SDK client instance.", withoutClient(disable)},
      {"|Lli|Lli::createLliClient:82 Create", createWithoutCallback},
      {"|Lli|Lli::createLliClient:84 cb function null", createWithoutCallback},
      {"|Lli|Lli::createLliClient:91 Failed to get SDK instance.", createWithoutMemory},
      {"|Lli|Lli::destroyLliClient:115 Destroy", destroy},
      {"|Lli|Lli::destroyLliClient:118 Failed to get SDK instance.", destroy},
      {"|Lli|Lli::destroyLliClient:123 Failed to get SDK client instance.", withoutClient(destroy)},
      {"|Lli|Lli::lliRegLinkInterruptInd:145 Failed to get SDK instance", request},
      {"|Lli|Lli::lliRegLinkInterruptInd:150 Failed to get SDK client instance",
       withoutClient(request)},
      {"|Lli|Lli::Lli:177 Lli ctor", live},
      {"|Lli|Lli::~Lli:183 ~Lli called", live},
  });
}

TEST_F(LliLines, ListenerLinesAreFixed) {
  const Blob status = serialise(statusMessage<LliNames>(12));
  const Blob phase = serialise(indication({1, 1, 3, 6, 18446744073709551615u, 4294967296}));
  expectLines({
      {"|Lli|Lli::blobListener:193 Lli::blobListener", told(SdkClientBase::SendFailed)},
      {"|Lli|Lli::blobListener:193 Lli::blobListener", told(SdkClientBase::ServiceDown)},
      {"|Lli|Lli::blobListener:193 Lli::blobListener", receives({})},
      {"|Lli|Lli::blobListener:202 STATUS_IND", receives(status)},
      {"|Lli|Lli::blobListener:204 status_msg 12", receives(status)},
      {"|Lli|Lli::blobListener:207 status -1", receives(status)},
      {"|Lli|Lli::blobListener:210 Status IND message data not filled", receives({0x08, 0})},
      {"|Lli|Lli::blobListener:214 LLI_IND_RESP", receives(phase)},
      {"|Lli|Lli::blobListener:233 LLI_IND_RESP handoffIndType: 1, handoffState: 0, "
       "preHandoffState: 1, sourceRat: 3, targetRat: 6, "
       "estimatedTimeToInterruption: 18446744073709551615, "
       "estimatedInterruptionDuration: 4294967296",
       receives(phase)},
      {"|Lli|Lli::blobListener:251 LLI_IND_RESP cb sent", receives(phase, wantIndications)},
      {"|Lli|Lli::blobListener:253 LLI_IND_RESP no cb", receives(phase)},
      {"|Lli|Lli::blobListener:257 LLI_IND_RESP message data not filled", receives({0x08, 1})},
      {"|Lli|Lli::blobListener:269 unknown internal status 3", told(SdkClientBase::ServiceUp)},
      {"|Lli|Lli::blobListener:269 unknown internal status -7", told(-7)},
  });
}

// This line has no fixed number.
TEST_F(LliLines, UnknownMessageIsNamed) {
  receives({0x08, 2})();
  EXPECT_EQ(linesOf(kBlobListener), (LogLines{{kBlobListener, 193, "Lli::blobListener"},
                                              {kBlobListener, "Unknown message type"}}));
}

}  // namespace
}  // namespace llitest
