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
  const LockGuard lock(mGate.mMutex);
  if (--mGate.mRunning == 0) mGate.mDrained.notify_all();
}

bool CallbackGate::enter() {
  const LockGuard lock(mMutex);
  if (!mClosed) ++mRunning;
  return !mClosed;
}

void CallbackGate::close() {
  const LockGuard lock(mMutex);
  mClosed = true;
}

void CallbackGate::drain() {
  UniqueLock lock(mMutex);
  mDrained.wait(lock, [this]() ORB_REQUIRES(mMutex) { return mRunning == 0; });
}

bool CallbackGate::insideCallback() { return tCallbackDepth > 0; }
