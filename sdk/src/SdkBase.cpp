// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "SdkBase.h"

#include <utility>

#include "HardStop.h"
#include "SdkClient.h"
#include "Thread.h"

SdkBase::~SdkBase() = default;

SdkBase::Created SdkBase::createSdkInstance(OrbSdkClientType type, SdkClientBase::Listener listener,
                                            std::shared_ptr<SdkClientEvent> event,
                                            std::shared_ptr<SdkClientEvent> farewell) {
  auto departure = std::make_shared<SdkDeparture>(std::move(farewell));
  {
    UniqueLock lock(mLock);
    awaitSettled(lock);
    if (mLeft) return Created::Left;
    if (mCreating) return Created::No;  // by a thread that is ending the process
    if (!mDeparture) mDeparture = std::move(departure);
    if (mClient) {
      if (event) mClient->postEvent(std::move(event));
      return Created::Yes;
    }
    mCreating = true;
  }
  auto client = SdkClient::getInstance(type, std::move(listener), std::move(event));
  const bool created = client != nullptr;
  {
    const LockGuard lock(mLock);
    mCreating = false;
    mClient = std::move(client);
  }
  mCreated.notify_all();
  if (!created) reportNoClient();
  return created ? Created::Yes : Created::No;
}

void SdkBase::reportNoClient() {
  StatusCallback status = nullptr;
  StatusV2Callback statusV2 = nullptr;
  {
    const LockGuard lock(mLock);
    status = mStatusIndCb;
    statusV2 = mBaseStatusV2Cb;
  }
  const CallbackGate::Pass pass(mGate);
  if (!pass) return;
  if (statusV2) {
    statusV2(STATUS_V2_INTERNAL_ERROR);
  } else if (status) {
    status(STATUS_INTERNAL_ERROR);
  }
}

bool SdkBase::hasClient() { return client() != nullptr; }

void SdkBase::awaitSettled(UniqueLock& lock) {
  awaitUnlessStopped(mCreated, lock, [this]() ORB_REQUIRES(mLock) { return !mCreating; });
}

std::shared_ptr<SdkClient> SdkBase::client() {
  UniqueLock lock(mLock);
  awaitSettled(lock);
  return mClient;
}

bool SdkBase::post(std::shared_ptr<SdkClientEvent> event) {
  UniqueLock lock(mLock);
  awaitSettled(lock);
  if (mClient) mClient->postEvent(std::move(event));
  return mClient != nullptr;
}

std::shared_ptr<SdkDeparture> SdkBase::beginLeaving() {
  const LockGuard lock(mLock);
  if (!mClient) return nullptr;
  mLeft = true;
  mGate.close();
  auto departure = std::move(mDeparture);
  mClient->beginDeparture(departure);
  mClient.reset();  // the departure holds the client: ours is never the last reference
  return departure;
}

void SdkBase::finishLeaving(const std::shared_ptr<SdkBase>& object,
                            const std::shared_ptr<SdkDeparture>& departure) {
  const auto finish = [object, departure] {
    object->mGate.drain();
    SdkClient::finishDeparture(*departure);
  };
  if (!CallbackGate::insideCallback()) {
    finish();
    return;
  }
  std::thread closer;
  if (startThread(closer, "orb-closer", finish)) {
    closer.detach();
  } else {
    SdkClient::abandonDeparture(*departure);
  }
}
