// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "SdkDeparture.h"

#include <utility>

SdkDeparture::SdkDeparture(std::shared_ptr<SdkClientEvent> farewell)
    : mFarewell(std::move(farewell)),
      mType(mFarewell->type),
      mPlace(1),
      mPosting(SdkClientBase::prepare(mFarewell)) {}

void SdkDeparture::startPatience(std::chrono::milliseconds patience) {
  const LockGuard lock(mMutex);
  mPatienceEnd = Clock::now() + patience;
}

bool SdkDeparture::patienceOver() const {
  const LockGuard lock(mMutex);
  return Clock::now() >= mPatienceEnd;
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
