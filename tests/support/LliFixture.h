// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <orb/lli.h>

#include "ServiceFixture.h"
#include "lli.pb.h"

namespace llitest {

using namespace servicetest;

inline void onInterrupt(LliHandoffIndType type, LliPreHandoffState state,
                        const LliInterruptInfo* info);

// The values of an indication besides its type.
struct Interruption {
  int preState;
  LliInterruptInfo info;
};

struct LliNames {
  using ClientMsg = LliProto::ClientMsg;
  using Record = Interruption;
  static constexpr const char* kName = "Lli";
  static constexpr const char* kEnable = "orb_lli_enable";
  static constexpr const char* kDisable = "orb_lli_disable";
  static constexpr const char* kCreate = "createLliClient";
  static constexpr const char* kDestroy = "destroyLliClient";
  static constexpr const char* kCreateWithoutCallback = "cb function null";
  static constexpr const char* kDestroying = "Destroy";
  // Whether a create that has no client calls its own callback.
  static constexpr bool kCreateTells = true;
  static constexpr uint8_t kEndpoint = 107;
  static constexpr uint8_t kSdkType = orbsim::kSdkTypeLli;

  static int enable(LliStatusIndCb cb) { return orb_lli_enable(cb); }
  static int disable() { return orb_lli_disable(); }
  static int create(LliStatusV2Cb cb) { return createLliClient(cb); }
  static int destroy() { return destroyLliClient(); }

  static std::vector<Request> requests() {
    return {{"lliRegLinkInterruptInd", [] { return lliRegLinkInterruptInd(onInterrupt); },
             [] { return lliRegLinkInterruptInd(nullptr); }}};
  }
  static std::vector<EventTexts> events() {
    return {{"STATUS_IND", "Status IND message data not filled"},
            {"LLI_IND_RESP", "LLI_IND_RESP message data not filled"}};
  }
  static auto values(const Record& record) {
    return std::tie(record.preState, record.info.handoffState, record.info.sourceRat,
                    record.info.targetRat, record.info.estimatedTimeToInterruption,
                    record.info.estimatedInterruptionDuration);
  }
};

using Log = CallLog<LliNames>;

inline void onInterrupt(LliHandoffIndType type, LliPreHandoffState state,
                        const LliInterruptInfo* info) {
  Log::get().add({"interrupt", type, {state, *info}});
}
inline void onOtherInterrupt(LliHandoffIndType type, LliPreHandoffState state,
                             const LliInterruptInfo* info) {
  Log::get().add({"otherInterrupt", type, {state, *info}});
}

// The daemon's side of an indication, in the order of the message's fields.
struct Phase {
  int info;
  int preState;
  int source, target;
  uint64_t time, duration;
};

inline LliProto::ClientMsg indication(const Phase& phase) {
  auto message = event<LliNames>(LliProto::LLI_IND_RESP);
  auto* body = message.mutable_data()->mutable_lli_ind_resp();
  body->set_handoff_info(static_cast<LliProto::HandoffInfo>(phase.info));
  body->set_pre_handoff_state(static_cast<LliProto::PreHandoffState>(phase.preState));
  body->set_source_rat(static_cast<LliProto::LliRatType>(phase.source));
  body->set_target_rat(static_cast<LliProto::LliRatType>(phase.target));
  body->set_estimated_time_to_interruption(phase.time);
  body->set_estimated_interruption_duration(phase.duration);
  return message;
}

// A record, from plain numbers.
inline Interruption interruption(int preState, int handoffState, int source, int target,
                                 uint64_t time, uint64_t duration) {
  return {preState,
          {static_cast<LliHandoffState>(handoffState), static_cast<LliRat>(source),
           static_cast<LliRat>(target), time, duration}};
}

using LliTest = ServiceTest<LliNames>;

}  // namespace llitest
