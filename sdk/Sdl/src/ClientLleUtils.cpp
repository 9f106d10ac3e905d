// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "ClientLleUtils.h"

#include "StatusConversion.h"

status_v2_e ClientLleUtils::statusToStatusV2(status_e status) {
  return orb::utils::statusToStatusV2(status);
}

status_e ClientLleUtils::protoStatusToClient(LleProto::Status status) {
  return orb::utils::protoStatusToClient(status, __FILE__, __LINE__);
}

SdlAccessNetworkType ClientLleUtils::protoAccessNetworkToClient(LleProto::RatType rat) {
  switch (rat) {
    case LleProto::WCDMA:
      return SDL_ACCESS_NETWORK_TYPE_WCDMA;
    case LleProto::LTE:
      return SDL_ACCESS_NETWORK_TYPE_LTE;
    case LleProto::NR5G:
      return SDL_ACCESS_NETWORK_TYPE_NR5G;
    default:
      return SDL_ACCESS_NETWORK_TYPE_NONE;
  }
}
