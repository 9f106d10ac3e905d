// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Every byte of LLI on the socket: handshake, requests and indications.
#include <utility>

#include "GoldenService.h"
#include "LliFixture.h"

namespace golden {
namespace {

using namespace llitest;

class GoldenLli : public GoldenService<LliNames> {
 protected:
  static std::string describe(const servicetest::Call<LliNames>& call) {
    if (call.callback == "status" || call.callback == "v2") return describeStatus(call);
    const LliInterruptInfo& info = call.record.info;
    return call.callback + " callback: type " + std::to_string(call.status) + ", preState " +
           std::to_string(call.record.preState) + ", handoffState " +
           std::to_string(info.handoffState) + ", sourceRat " + std::to_string(info.sourceRat) +
           ", targetRat " + std::to_string(info.targetRat) + ", estimatedTimeToInterruption " +
           std::to_string(info.estimatedTimeToInterruption) + ", estimatedInterruptionDuration " +
           std::to_string(info.estimatedInterruptionDuration);
  }
  void indicatePhase(Transcript& transcript, const Phase& phase) {
    indicate(transcript,
             "LLI_IND_RESP, handoff " + std::to_string(phase.info) + ", pre-handoff " +
                 std::to_string(phase.preState) + ", from " + std::to_string(phase.source) +
                 " to " + std::to_string(phase.target) + ", in " + std::to_string(phase.time) +
                 " for " + std::to_string(phase.duration),
             indication(phase), describe);
  }
};

TEST_F(GoldenLli, Requests) {
  Transcript transcript(
      "LLI: what goes over the socket for each call of an application. tests/golden, "
      "GoldenLli_test\nSession 0x01020304, then 0x01020305 and 0x01020306.");
  recordEnableAndDisable(transcript);
  record(
      transcript, "orb_lli_enable(cb)", [] { return orb_lli_enable(onStatus); }, kEnablePieces);
  record(transcript, "lliRegLinkInterruptInd(cb)",
         [] { return lliRegLinkInterruptInd(onInterrupt); });
  expectGolden("lli_requests.hex", transcript.text());
}

TEST_F(GoldenLli, Indications) {
  Transcript transcript(
      "LLI: what the daemon sends, and what an application's callbacks get of it. tests/golden, "
      "GoldenLli_test");
  ASSERT_NO_FATAL_FAILURE(enableBothQuietly());
  ASSERT_EQ(0, lliRegLinkInterruptInd(onInterrupt));
  ASSERT_EQ(1u, wiretap::take(1).size());
  indicateStatuses(transcript, describe);
  constexpr uint64_t kMost = ~uint64_t{0};
  for (int info = 0; info <= 5; ++info) {  // the last is unknown
    indicatePhase(transcript, {info, 0, 3, 6, 2000, 120});
  }
  for (const int preState : {1, 2, -1}) indicatePhase(transcript, {0, preState, 3, 6, 0, 0});
  for (int rat = 0; rat <= 12; ++rat) {
    indicatePhase(transcript, {1, 0, rat, 12 - rat, 0x0102030405060708, uint64_t{1} << 32});
  }
  indicatePhase(transcript, {4, 0, -1, 1000, kMost, kMost});
  expectGolden("lli_indications.hex", transcript.text());
}

TEST_F(GoldenLli, Session) {
  Transcript transcript(
      "LLI: a session from the first byte to the last. tests/golden, GoldenLli_test");
  beginSession(transcript);
  record(transcript, "lliRegLinkInterruptInd(cb)",
         [] { return lliRegLinkInterruptInd(onInterrupt); });
  tell(transcript, "STATUS_IND, SUCCESS", servicetest::statusMessage<LliNames>(1));
  const std::pair<int, const char*> kPhases[] = {
      {0, "before a handoff"}, {4, "imminent"}, {1, "start"}, {2, "success"}};
  for (const auto& [info, phase] : kPhases) {
    tell(transcript, std::string("LLI_IND_RESP, ") + phase + ", from LTE to 5G, in 2000 for 120",
         indication({info, 0, 3, 6, 2000, 120}));
  }
  endSession(transcript);
  expectGolden("lli_session.hex", transcript.text());
}

}  // namespace
}  // namespace golden
