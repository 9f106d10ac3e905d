// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "CallbackGate.h"

#include <utility>

namespace {

thread_local int tCallbackDepth = 0;
thread_local AfterCallback* tFirstAfter = nullptr;  // in the order of afterCallback()
thread_local AfterCallback* tLastAfter = nullptr;

}  // namespace

CallbackGate::Pass::Pass(CallbackGate& gate) : mGate(gate), mOpen(gate.enter()) {
  if (mOpen) ++tCallbackDepth;
}

CallbackGate::Pass::~Pass() {
  if (!mOpen) return;
  --tCallbackDepth;
  mGate.leave();
  // The gate may be gone by now.
  if (tCallbackDepth == 0) doAfter();
}

void CallbackGate::afterCallback(std::shared_ptr<AfterCallback> work) {
  AfterCallback* const added = work.get();
  added->mKept = std::move(work);
  (tFirstAfter == nullptr ? tFirstAfter : tLastAfter->mNext) = added;
  tLastAfter = added;
}

void CallbackGate::doAfter() {
  while (tFirstAfter != nullptr) {
    const std::shared_ptr<AfterCallback> work = std::move(tFirstAfter->mKept);
    tFirstAfter = work->mNext;
    work->outside(work);
  }
}

bool CallbackGate::enter() {
  unsigned state = mState;
  do {
    if ((state & kClosed) != 0) return false;
  } while (!mState.compare_exchange_weak(state, state + kOneRuns));
  return true;
}

void CallbackGate::leave() {
  unsigned state = mState;
  while ((state & kClosed) == 0) {
    if (mState.compare_exchange_weak(state, state - kOneRuns)) return;
  }
  const LockGuard lock(mMutex);
  mState -= kOneRuns;
  if (isIdle()) mDrained.notify_all();
}

void CallbackGate::close() { mState |= kClosed; }

void CallbackGate::drain() {
  UniqueLock lock(mMutex);
  mDrained.wait(lock, [this] { return isIdle(); });
}

bool CallbackGate::isOver() {
  const LockGuard lock(mMutex);
  return mState == kClosed;
}

bool CallbackGate::insideCallback() { return tCallbackDepth > 0; }

ClosedGates::Place ClosedGates::placeFor(std::shared_ptr<CallbackGate> gate) {
  Place place(1);
  place.front().gate = std::move(gate);
  return place;
}

ClosedGates::Place ClosedGates::takeThoseOver() {
  Place over;
  for (auto each = mGates.begin(); each != mGates.end();) {
    const auto next = std::next(each);
    if (each->gate->isOver()) over.splice(over.end(), mGates, each);
    each = next;
  }
  return over;
}

uint64_t ClosedGates::add(Place place) {
  Place over;
  const LockGuard lock(mMutex);
  over = takeThoseOver();
  place.front().number = ++mLastNumber;
  mGates.splice(mGates.end(), place);
  return mLastNumber;
}

std::shared_ptr<CallbackGate> ClosedGates::firstUpTo(uint64_t last) {
  Place over;
  const LockGuard lock(mMutex);
  over = takeThoseOver();
  return mGates.empty() || mGates.front().number > last ? nullptr : mGates.front().gate;
}

void ClosedGates::await(uint64_t last) {
  while (const auto gate = firstUpTo(last)) gate->drain();
}
