// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <orb/lli.h>

#include "lli.pb.h"

// Translates between the values of the C API and those of the LLI messages. No state, no instances;
// may be called from any thread. Nothing fails: an unknown value gives 0 and a log line.
class ClientLliUtils {
 public:
  ClientLliUtils() = delete;

  // The second generation's number of a status; see StatusConversion.h.
  static status_v2_e statusToStatusV2(status_e status);

  // One less than the message's number; STATUS_INVALID and a log line for a number it does not
  // list.
  static status_e protoStatusToClient(LliProto::Status status);

  // Whether the phase belongs to a handoff or to the time before one.
  static LliHandoffIndType protoHandoffInfoToClient(LliProto::HandoffInfo info);

  // The stage of the handoff. The phase before a handoff is no stage: it counts as unknown.
  static LliHandoffState protoHandoffStateToClient(LliProto::HandoffInfo info);

  static LliPreHandoffState protoPreHandoffStateToClient(LliProto::PreHandoffState state);

  static LliRat protoRatToClient(LliProto::LliRatType rat);
};
