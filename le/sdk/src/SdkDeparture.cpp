// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "SdkDeparture.h"

#include <algorithm>
#include <utility>

#include "SdkClient.h"

SdkDeparture::SdkDeparture(std::shared_ptr<SdkClientEvent> farewell)
    : mFarewell(std::move(farewell)),
      mType(mFarewell->type),
      mPosting(SdkClientBase::prepare(mFarewell)) {}

void SdkDeparture::startPatience(std::chrono::milliseconds patience) {
  const LockGuard lock(mMutex);
  mPatienceEnd = Clock::now() + patience;
}

bool SdkDeparture::patienceOver() const {
  const LockGuard lock(mMutex);
  return Clock::now() >= mPatienceEnd;
}

void SdkDeparture::outside(const std::shared_ptr<AfterCallback>& self) {
  SdkClient::watchDeparture(std::static_pointer_cast<SdkDeparture>(self));
}

bool SdkDeparture::awaitPatience() {
  Clock::time_point end;
  {
    const LockGuard lock(mMutex);
    end = mPatienceEnd;
  }
  const auto left = end - Clock::now();
  return await(std::chrono::ceil<std::chrono::milliseconds>(std::max(left, Clock::duration(0))));
}

bool SdkDeparture::claimFarewell() {
  const LockGuard lock(mMutex);
  if (mFarewellState != Farewell::Open) return false;
  mFarewellState = Farewell::Claimed;
  return true;
}

void SdkDeparture::noteFarewellSaid() {
  const LockGuard lock(mMutex);
  mFarewellState = Farewell::Said;
  mFarewellTried.notify_all();
}

void SdkDeparture::awaitFarewell() {
  UniqueLock lock(mMutex);
  mFarewellTried.wait(
      lock, [this]() ORB_REQUIRES(mMutex) { return mFarewellState != Farewell::Claimed; });
}

void SdkDeparture::complete(std::shared_ptr<OrbIpcClientSession> session, bool last) {
  const LockGuard lock(mMutex);
  mSession = std::move(session);
  mLast = last;
  mDone = true;
  mCompleted.notify_all();
}

bool SdkDeparture::await(std::chrono::milliseconds timeout) {
  UniqueLock lock(mMutex);
  return mCompleted.wait_for(lock, timeout, [this]() ORB_REQUIRES(mMutex) { return mDone; });
}

std::shared_ptr<OrbIpcClientSession> SdkDeparture::session() const {
  const LockGuard lock(mMutex);
  return mSession;
}

bool SdkDeparture::wasLast() const {
  const LockGuard lock(mMutex);
  return mLast;
}
