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
// Called from application threads; mLock guards the handle and what belongs to it, is held while an
// event is posted, so that nothing is posted behind the cleanup event, and never while a callback
// runs or a thread is waited for.
class SdkBase {
 public:
  enum class Created { Yes, No, Disabled };
  using StatusCallback = void (*)(status_e);
  using StatusV2Callback = void (*)(status_v2_e);

  SdkBase() = default;
  SdkBase(const SdkBase&) = delete;
  SdkBase& operator=(const SdkBase&) = delete;
  virtual ~SdkBase();

  // What the daemon or the SDK client has to tell. On the receiver or the worker thread.
  virtual void blobListener(SdkClientBase::SdkStatus status, const std::vector<uint8_t>& blob) = 0;

  // What a call changes in the object, applied under mLock in the moment in which the call is
  // accepted: a refused one changes nothing. What goes with an event throws nothing.
  using Change = std::function<void()>;

  // Reaches the SDK client for @p type and hands it @p event; @p cleanup is the cleanup event,
  // which will be posted last. No: there is no client, which has been reported to a status
  // callback. Disabled: the object was disabled meanwhile, a new one is needed; nothing was
  // changed. Throws for want of memory, with nothing changed.
  Created createSdkInstance(OrbSdkClientType type, SdkClientBase::Listener listener,
                            std::shared_ptr<SdkClientEvent> event,
                            std::shared_ptr<SdkClientEvent> cleanup, const Change& change = {});

  bool hasClient();
  // Unlike that, false for an object that was disabled.
  bool neverHadClient();
  // Applies @p change and posts a request, if there is one; false, with neither done, when there is
  // no client (any more).
  bool accept(const Change& change, std::shared_ptr<SdkClientEvent> event = nullptr);

  // First half of disable: closes the gate, posts the cleanup event as the last one and gives the
  // client away. Empty when there is no client; @p refused is then called under mLock, unless a
  // creation is under way. The second half is finishDisable().
  std::shared_ptr<SdkDisable> beginDisable(const Change& refused = {});
  // Waits until the type is deactivated; inside a callback it returns at once, and after the
  // callback that is left to a thread of the library.
  static void finishDisable(const std::shared_ptr<SdkDisable>& disable);

 protected:
  CallbackSlot<StatusCallback> mStatusIndCb;
  CallbackSlot<StatusV2Callback> mBaseStatusV2Cb;

  Mutex mLock;
  // Shared, because it may be waited for after the object is gone.
  const std::shared_ptr<CallbackGate> mGate = std::make_shared<CallbackGate>();

 private:
  void reportNoClient(StatusCallback status, StatusV2Callback statusV2);
  // Waits until no creation is under way, or until there is no more point in that.
  void awaitSettled(UniqueLock& lock) ORB_REQUIRES(mLock);

  std::shared_ptr<SdkClient> mClient ORB_GUARDED_BY(mLock);
  // With the client comes what disable takes.
  std::shared_ptr<SdkDisable> mDisable ORB_GUARDED_BY(mLock);
  // One thread is in SdkClient::getInstance(): others wait for what comes of it, for the first
  // answer may come before the handle is stored. The wait ends with the start of a thread and no
  // callback is called meanwhile.
  bool mCreating ORB_GUARDED_BY(mLock) = false;
  Condition mCreated;
  bool mDisabled ORB_GUARDED_BY(mLock) = false;
};
