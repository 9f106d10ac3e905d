// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "SdkDeparture.h"

#include <utility>

SdkDeparture::SdkDeparture(std::shared_ptr<SdkClientEvent> farewell,
                           std::shared_ptr<SdkClient> client)
    : mFarewell(std::move(farewell)), mType(mFarewell->type), mClient(std::move(client)) {}

void SdkDeparture::startPatience(std::chrono::milliseconds patience) {
  const std::lock_guard<std::mutex> lock(mMutex);
  mPatienceEnd = Clock::now() + patience;
}

bool SdkDeparture::patienceOver() const {
  const std::lock_guard<std::mutex> lock(mMutex);
  return Clock::now() >= mPatienceEnd;
}

void SdkDeparture::complete(std::shared_ptr<OrbIpcClientSession> session, bool last) {
  const std::lock_guard<std::mutex> lock(mMutex);
  mSession = std::move(session);
  mLast = last;
  mDone = true;
  mCompleted.notify_all();
}

bool SdkDeparture::await(std::chrono::milliseconds timeout) {
  std::unique_lock<std::mutex> lock(mMutex);
  return mCompleted.wait_for(lock, timeout, [this] { return mDone; });
}

std::shared_ptr<OrbIpcClientSession> SdkDeparture::session() const {
  const std::lock_guard<std::mutex> lock(mMutex);
  return mSession;
}

bool SdkDeparture::wasLast() const {
  const std::lock_guard<std::mutex> lock(mMutex);
  return mLast;
}
