// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "ClientLliUtils.h"

#include "SdkLog.h"
#include "StatusConversion.h"

status_v2_e ClientLliUtils::statusToStatusV2(status_e status) {
  return orb::utils::statusToStatusV2(status);
}

status_e ClientLliUtils::protoStatusToClient(LliProto::Status status) {
  return orb::utils::protoStatusToClient(status, __FILE__, __LINE__);
}

LliHandoffIndType ClientLliUtils::protoHandoffInfoToClient(LliProto::HandoffInfo info) {
  switch (info) {
    case LliProto::PRE_HANDOFF:
      return LLI_HANDOFF_IND_TYPE_PRE_HANDOFF;
    case LliProto::HANDOFF_START:
    case LliProto::HANDOFF_SUCCESS:
    case LliProto::HANDOFF_FAILURE:
    case LliProto::HANDOFF_IMMINENT:
      return LLI_HANDOFF_IND_TYPE_HANDOFF;
    default:
      SDK_LOG("OrbSdk", "Unknown HandoffInfo!");
      return LLI_HANDOFF_IND_TYPE_PRE_HANDOFF;
  }
}

LliHandoffState ClientLliUtils::protoHandoffStateToClient(LliProto::HandoffInfo info) {
  switch (info) {
    case LliProto::HANDOFF_START:
      return LLI_HANDOFF_STATE_START;
    case LliProto::HANDOFF_SUCCESS:
      return LLI_HANDOFF_STATE_SUCCESS;
    case LliProto::HANDOFF_FAILURE:
      return LLI_HANDOFF_STATE_FAILURE;
    case LliProto::HANDOFF_IMMINENT:
      return LLI_HANDOFF_STATE_IMMINENT;
    default:
      SDK_LOG("OrbSdk", "Unknown HandoffInfo!");
      return LLI_HANDOFF_STATE_START;
  }
}

LliPreHandoffState ClientLliUtils::protoPreHandoffStateToClient(LliProto::PreHandoffState state) {
  switch (state) {
    case LliProto::ENTRY:
      return LLI_PRE_HANDOFF_STATE_ENTRY;
    case LliProto::EXIT:
      return LLI_PRE_HANDOFF_STATE_EXIT;
    default:
      SDK_LOG("OrbSdk", "Unknown PreHandoffState!");
      return LLI_PRE_HANDOFF_STATE_ENTRY;
  }
}

LliRat ClientLliUtils::protoRatToClient(LliProto::LliRatType rat) {
  // Both number the technologies alike.
  if (LliProto::LliRatType_IsValid(rat)) return static_cast<LliRat>(rat);
  SDK_LOG("OrbSdk", "Unknown LliRatType!");
  return LLI_RAT_NULL_BEARER;
}
