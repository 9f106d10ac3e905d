// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "CallbackGate.h"

namespace {

thread_local int tCallbackDepth = 0;

}  // namespace

CallbackGate::Pass::Pass(CallbackGate& gate) : mGate(gate), mOpen(gate.enter()) {
  if (mOpen) ++tCallbackDepth;
}

CallbackGate::Pass::~Pass() {
  if (!mOpen) return;
  --tCallbackDepth;
  const std::lock_guard<std::mutex> lock(mGate.mMutex);
  if (--mGate.mRunning == 0) mGate.mDrained.notify_all();
}

bool CallbackGate::enter() {
  const std::lock_guard<std::mutex> lock(mMutex);
  if (!mClosed) ++mRunning;
  return !mClosed;
}

void CallbackGate::close() {
  const std::lock_guard<std::mutex> lock(mMutex);
  mClosed = true;
}

void CallbackGate::drain() {
  std::unique_lock<std::mutex> lock(mMutex);
  mDrained.wait(lock, [this] { return mRunning == 0; });
}

bool CallbackGate::insideCallback() { return tCallbackDepth > 0; }
