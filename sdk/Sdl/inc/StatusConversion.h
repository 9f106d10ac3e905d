// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <orb/status.h>

// Conversions that all services share: their messages have the same numbers of statuses, so one
// table is enough. No state; may be called from any thread.
namespace orb::utils {

// The second generation's number of a status. STATUS_INVALID_SLOT and unknown values have none:
// they give STATUS_V2_INVALID and an error line, straight to the platform log and without a tag.
status_v2_e statusToStatusV2(status_e status);

// The client's status of a service message's status number. Outside 0 to 9 it gives STATUS_INVALID
// and a log line of the caller's `protoStatusToClient`; the caller passes its own file and line.
status_e protoStatusToClient(int protoStatus, const char* file, int line);

}  // namespace orb::utils
