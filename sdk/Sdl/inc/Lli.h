// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <orb/lli.h>

#include <vector>

#include "Service.h"
#include "lli.pb.h"

// The link interruption indication service of the process. Requests come on application threads,
// indications on the receiver thread. No lock of its own: the callback is in a slot.
class Lli : public ServiceOf<Lli> {
 public:
  static constexpr LogSource kSource{"Lli", "sdk/Sdl/src/Lli.cpp"};
  static const ServiceTable kTable;
  static const RequestPoints kRegLinkInterruptInd;

  int64_t regLinkInterruptInd(LliLinkInterruptIndCb cb);

 protected:
  void handleBlob(const std::vector<uint8_t>& blob) override;

 private:
  void handleIndication(const LliProto::LliIndResp& indication);

  CallbackSlot<LliLinkInterruptIndCb> mLinkInterruptInd;
};
