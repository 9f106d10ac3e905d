// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "WakelockWrapper.h"

namespace orb::utils {

std::shared_ptr<WakelockWrapper> WakelockWrapper::getInstance() {
  // A local static: made once however many threads ask first. The constructor is private, which
  // make_shared cannot reach.
  static const std::shared_ptr<WakelockWrapper> mInstance(new WakelockWrapper);
  return mInstance;
}

WakelockWrapper::WakelockWrapper() : mLockRecord(std::make_shared<LockRecord>()) {}

void WakelockWrapper::start() {}

void WakelockWrapper::acquireWakelock() {}

int WakelockWrapper::doResetTimer() { return 0; }

int WakelockWrapper::releaseWakelock() { return 0; }

}  // namespace orb::utils
