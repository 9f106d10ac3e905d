// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// Passes a blob to the listener of LLI. Input: the blob.
#include "FuzzTarget.h"
#include "Lli.h"
#include "QuietService.h"
#include "Watchdog.h"
#include "lli.pb.h"

namespace {

QuietService* service = nullptr;

void onInterrupt(LliHandoffIndType type, LliPreHandoffState preState,
                 const LliInterruptInfo* info) {
  FUZZ_CHECK(info != nullptr);
  called(callOf("interrupt", type, preState, info->handoffState, info->sourceRat, info->targetRat,
                info->estimatedTimeToInterruption, info->estimatedInterruptionDuration));
}

// Unknown numbers in messages count as 0.
int upTo(int greatest, int value) { return value >= 0 && value <= greatest ? value : 0; }

Calls expectedCalls(const LliProto::ClientMsg& message) {
  Calls expected;
  const auto& data = message.data();
  const int event = message.event_id();
  if (event == LliProto::STATUS_IND && data.has_status_msg())
    expectStatus(data.status_msg().status(), expected);
  if (event == LliProto::LLI_IND_RESP && data.has_lli_ind_resp()) {
    const auto& indication = data.lli_ind_resp();
    // 0 is the phase before a handoff, 1 to 4 are the stages of one.
    const int phase = upTo(4, indication.handoff_info());
    expected.push_back(callOf("interrupt", phase == 0 ? 0 : 1,
                              upTo(1, indication.pre_handoff_state()), phase == 0 ? 0 : phase - 1,
                              upTo(11, indication.source_rat()), upTo(11, indication.target_rat()),
                              indication.estimated_time_to_interruption(),
                              indication.estimated_interruption_duration()));
  }
  return expected;
}

}  // namespace

int LLVMFuzzerInitialize(int*, char***) {
  const Watchdog::Step step("set-up");
  service = new QuietService(orb_lli_enable, createLliClient, Lli::mInstance());
  FUZZ_CHECK(lliRegLinkInterruptInd(onInterrupt) == 0);
  service->forgetRequests(1);
  return 0;
}

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const Watchdog::Step step("blob_lli");
  const std::vector<uint8_t> blob(data, data + size);
  service->deliver(blob);
  FUZZ_CHECK(takeCalls() == expectedCalls(QuietService::messageIn<LliProto::ClientMsg>(blob)));
  return 0;
}
