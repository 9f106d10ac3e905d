// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "SdkBase.h"

#include <utility>

#include "HardStop.h"
#include "SdkClient.h"

namespace {

// Made before the lock: what is posted under it takes no memory.
SdkClientBase::Posting postingOf(std::shared_ptr<SdkClientEvent> event) {
  return event ? SdkClientBase::prepare(std::move(event)) : SdkClientBase::Posting();
}

}  // namespace

SdkBase::~SdkBase() = default;

SdkBase::Created SdkBase::createSdkInstance(OrbSdkClientType type, SdkClientBase::Listener listener,
                                            std::shared_ptr<SdkClientEvent> event,
                                            std::shared_ptr<SdkClientEvent> cleanup,
                                            const Change& change) {
  auto disable = std::make_shared<SdkDisable>(std::move(cleanup));
  auto posting = postingOf(event);
  {
    UniqueLock lock(mLock);
    awaitSettled(lock);
    if (mDisabled) return Created::Disabled;
    if (mCreating) return Created::No;  // the process ends, and the other thread may never finish
    if (change) change();
    if (!mDisable) mDisable = std::move(disable);
    if (mClient) {
      if (!posting.empty()) mClient->post(std::move(posting));
      return Created::Yes;
    }
    mCreating = true;
  }
  auto client = SdkClient::getInstance(type, std::move(listener), std::move(event));
  const bool created = client != nullptr;
  StatusCallback status = nullptr;
  StatusV2Callback statusV2 = nullptr;
  {
    const LockGuard lock(mLock);
    mCreating = false;
    mClient = std::move(client);
    // Before the next thread tries with callbacks of its own.
    status = mStatusIndCb.get();
    statusV2 = mBaseStatusV2Cb.get();
  }
  mCreated.notify_all();
  if (!created) reportNoClient(status, statusV2);
  return created ? Created::Yes : Created::No;
}

void SdkBase::reportNoClient(StatusCallback status, StatusV2Callback statusV2) {
  const CallbackGate::Pass pass(*mGate);
  if (!pass) return;
  if (statusV2) {
    statusV2(STATUS_V2_INTERNAL_ERROR);
  } else if (status) {
    status(STATUS_INTERNAL_ERROR);
  }
}

bool SdkBase::hasClient() {
  UniqueLock lock(mLock);
  awaitSettled(lock);
  return mClient != nullptr;
}

bool SdkBase::neverHadClient() {
  UniqueLock lock(mLock);
  awaitSettled(lock);
  return !mClient && !mDisabled;
}

void SdkBase::awaitSettled(UniqueLock& lock) {
  awaitUnlessStopped(mCreated, lock, [this]() ORB_REQUIRES(mLock) { return !mCreating; });
}

bool SdkBase::accept(const Change& change, std::shared_ptr<SdkClientEvent> event) {
  auto posting = postingOf(std::move(event));
  UniqueLock lock(mLock);
  awaitSettled(lock);
  if (!mClient) return false;
  if (change) change();
  if (!posting.empty()) mClient->post(std::move(posting));
  return true;
}

std::shared_ptr<SdkDisable> SdkBase::beginDisable(const Change& refused) {
  const LockGuard lock(mLock);
  if (!mClient) {
    if (refused && !mCreating) refused();
    return nullptr;
  }
  mDisabled = true;
  mGate->close();
  auto disable = std::move(mDisable);
  SdkDisable::begin(disable, std::move(mClient));
  return disable;
}

void SdkBase::finishDisable(const std::shared_ptr<SdkDisable>& disable) {
  if (CallbackGate::insideCallback()) {
    CallbackGate::afterCallback(disable);
  } else {
    disable->finish();
  }
}
