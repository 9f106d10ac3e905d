// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <orb/status.h>

#include <functional>
#include <memory>
#include <vector>

#include "CallbackGate.h"
#include "CallbackSlot.h"
#include "Mutex.h"
#include "SdkClientBase.h"

class SdkClient;
class SdkDisable;

// Base of the service objects: holds the handle of the SDK client and reports when there is none.
// Called from application threads; mLock guards the handle and what belongs to it. It is held while
// an event is posted, so that nothing is posted after the cleanup event. It is never held while a
// callback runs or while a thread waits for another.
class SdkBase {
 public:
  using StatusCallback = void (*)(status_e);
  using StatusV2Callback = void (*)(status_v2_e);

  SdkBase() = default;
  SdkBase(const SdkBase&) = delete;
  SdkBase& operator=(const SdkBase&) = delete;
  virtual ~SdkBase();

  // Messages of the daemon and of the SDK client. On the receiver or the worker thread.
  virtual void blobListener(SdkClientBase::SdkStatus status, const std::vector<uint8_t>& blob) = 0;

  // What a call changes in the object. It is applied under mLock, at the moment in which the call
  // is accepted: a refused call changes nothing. A change that comes with an event must not throw.
  using Change = std::function<void()>;

  enum class Created {
    Yes,
    No,        // there is no client, and a status callback was told so
    Disabled,  // the object was disabled meanwhile: the caller needs a new one
  };
  // Gets the SDK client for @p type and gives it @p event. @p cleanup is the cleanup event, which
  // disable posts last. If the result is Disabled, nothing was changed. Throws std::bad_alloc, with
  // nothing changed.
  Created createSdkInstance(OrbSdkClientType type, SdkClientBase::Listener listener,
                            std::shared_ptr<SdkClientEvent> event,
                            std::shared_ptr<SdkClientEvent> cleanup, const Change& change = {});

  bool hasClient();
  // True if there is no client, and disable is not the reason.
  bool neverHadClient();
  // Applies @p change and posts @p event, if there is one. False, with nothing done, if there is no
  // client (any more).
  bool accept(const Change& change, std::shared_ptr<SdkClientEvent> event = nullptr);

  // First half of disable: closes the gate, posts the cleanup event as the last one, and releases
  // the client. Empty if there is no client; @p refused is then called under mLock, unless a thread
  // is creating one. The second half is finishDisable().
  std::shared_ptr<SdkDisable> beginDisable(const Change& refused = {});
  // Waits until the type is deactivated. Inside a callback it returns at once, and a thread of the
  // library waits after the callback.
  static void finishDisable(const std::shared_ptr<SdkDisable>& disable);

 protected:
  CallbackSlot<StatusCallback> mStatusIndCb;
  CallbackSlot<StatusV2Callback> mBaseStatusV2Cb;

  Mutex mLock;
  // Shared, because a thread may wait for it after the object was destroyed.
  const std::shared_ptr<CallbackGate> mGate = std::make_shared<CallbackGate>();

 private:
  void reportNoClient(StatusCallback status, StatusV2Callback statusV2);
  // Waits until no thread creates a client, or until the process ends.
  void awaitSettled(UniqueLock& lock) ORB_REQUIRES(mLock);

  std::shared_ptr<SdkClient> mClient ORB_GUARDED_BY(mLock);
  // Made together with the client: the memory that disable needs.
  std::shared_ptr<SdkDisable> mDisable ORB_GUARDED_BY(mLock);
  // One thread is in SdkClient::getInstance(). Others wait for its result, because the first answer
  // may come before the handle is stored. The wait is short: the start of a thread, and no callback
  // runs meanwhile.
  bool mCreating ORB_GUARDED_BY(mLock) = false;
  Condition mCreated;
  bool mDisabled ORB_GUARDED_BY(mLock) = false;
};
