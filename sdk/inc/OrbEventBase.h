// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdint>

// Base of event records that are posted to a thread. This library reads nothing of it: its other
// users do.
class OrbEventBase {
 public:
  OrbEventBase() = default;
  virtual ~OrbEventBase() = default;
  virtual bool isMultiThreadEvent() = 0;

 protected:
  int32_t mBaseValue = 0;  // 0 in all events of this library
};
