// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "StatusConversion.h"

#include "PlatformLog.h"
#include "SdkLog.h"

namespace orb::utils {

namespace {

// The largest status number of the service messages: their reserved one.
constexpr int kLastProtoStatus = 9;

}  // namespace

status_v2_e statusToStatusV2(status_e status) {
  switch (status) {
    case STATUS_INVALID:
      return STATUS_V2_INVALID;
    case STATUS_SUCCESS:
      return STATUS_V2_SUCCESS;
    case STATUS_INVALID_ARG:
      return STATUS_V2_INVALID_ARG;
    case STATUS_INTERNAL_ERROR:
      return STATUS_V2_INTERNAL_ERROR;
    case STATUS_NOT_SUPPORTED:
      return STATUS_V2_NOT_SUPPORTED;
    case STATUS_INVALID_OPERATION:
      return STATUS_V2_INVALID_OPERATION;
    case STATUS_SERVICE_UP:
      return STATUS_V2_SERVICE_UP;
    case STATUS_SERVICE_DOWN:
      return STATUS_V2_SERVICE_DOWN;
    case STATUS_RESERVED:
      return STATUS_V2_RESERVED;
    case STATUS_INVALID_SLOT:
      break;  // the second generation never got a number for it
  }
  PLATFORM_LOG(ERROR, "Unknown Status!");
  return STATUS_V2_INVALID;
}

status_e protoStatusToClient(int protoStatus, const char* file, int line) {
  // The client's numbers are those of the messages minus one.
  if (protoStatus >= 0 && protoStatus <= kLastProtoStatus) {
    return static_cast<status_e>(protoStatus - 1);
  }
  SdkLog::print(ANDROID_LOG_DEBUG, "OrbSdk", file, "protoStatusToClient", line, "Unknown Status!");
  return STATUS_INVALID;
}

}  // namespace orb::utils
