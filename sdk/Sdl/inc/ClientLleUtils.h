// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <orb/lle.h>

#include "lle.pb.h"

// Translates between the values of the C API and those of the LLE messages. No state, no instances;
// may be called from any thread. Nothing fails: an unknown value gives the stated default.
class ClientLleUtils {
 public:
  ClientLleUtils() = delete;

  // The second generation's number of a status; see StatusConversion.h.
  static status_v2_e statusToStatusV2(status_e status);

  // One less than the message's number; STATUS_INVALID and a log line for a number it does not
  // list.
  static status_e protoStatusToClient(LleProto::Status status);

  // The access network, whose numbers start one later than the message's; none for anything
  // unknown.
  static SdlAccessNetworkType protoAccessNetworkToClient(LleProto::RatType rat);
};
