// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "AllocationStop.h"

#include "AllocationHook.h"

namespace torture {
namespace {

thread_local AllocationStop* tStop = nullptr;

}  // namespace

AllocationStop::AllocationStop(size_t number, std::function<void()> action)
    : mLeft(number), mAction(std::move(action)) {
  tStop = this;
}

AllocationStop::~AllocationStop() { tStop = nullptr; }

AllocationStop::Pause::Pause() : mPaused(tStop) { tStop = nullptr; }
AllocationStop::Pause::~Pause() { tStop = mPaused; }

void AllocationStop::allocating() {
  if (tStop != nullptr && tStop->mLeft > 0 && --tStop->mLeft == 0) tStop->mAction();
}

}  // namespace torture

bool memory::mayAllocate(size_t, const void*) {
  torture::AllocationStop::allocating();
  return true;
}
