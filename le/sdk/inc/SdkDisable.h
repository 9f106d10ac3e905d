// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <chrono>
#include <list>
#include <memory>

#include "CallbackGate.h"
#include "Mutex.h"
#include "SdkClientBase.h"

class OrbIpcClientSession;
class SdkClient;

// The disable of one client type, from the moment its cleanup event is posted until the worker has
// deactivated the type. Made when the type joins, with all the memory that the disable takes. The
// thread that disables begins and finishes it, the worker completes it. The disable message is sent
// once, by whoever claims it first: the worker, or the thread that forces the disable when the
// grace period is over. mMutex guards what follows it.
class SdkDisable : public AfterCallback {
 public:
  using Clock = std::chrono::steady_clock;
  using Place = std::list<std::shared_ptr<SdkDisable>>;

  // @p cleanup is the type's cleanup event, which carries the disable message.
  explicit SdkDisable(std::shared_ptr<SdkClientEvent> cleanup);

  const std::shared_ptr<SdkClientEvent> mCleanup;
  const OrbSdkClientType mType;

  // First half: posts the cleanup event to @p client. From now on nothing that the type's
  // connection receives or reports reaches the listener. Takes no memory and cannot fail.
  static void begin(const std::shared_ptr<SdkDisable>& disable, std::shared_ptr<SdkClient> client);
  // Second half: waits until the worker has sent what is queued and deactivated the type. When the
  // worker does not get there within the grace period (daemon absent, silent or not reading,
  // another type's connect or callback under way), forces the disable. Returns well within half a
  // second.
  void finish();
  // The second half for a caller who may not wait: a thread of the library forces the disable after
  // the grace period.
  static void finishLater(const std::shared_ptr<SdkDisable>& disable);
  // Waits for the rest of the grace period; false when the type is still active after it.
  bool awaitGracePeriod();
  // Ends the grace period: a connection that stands gets the disable message and is closed. The
  // worker deactivates the type when it gets there.
  void force();

  // After the grace period the type neither connects nor sends.
  bool gracePeriodOver() const;
  // Whether the caller is the one to send the disable message; it then tells when it has tried.
  bool claimMessage();
  void noteMessageSent();
  // Sends the disable message on @p session unless somebody else does, whose end is waited for
  // then.
  void sendMessage(OrbIpcClientSession& session);
  // On the worker: the type is deactivated. @p session was its connection, @p last tells that the
  // worker ends.
  void complete(std::shared_ptr<OrbIpcClientSession> session, bool last);

 private:
  friend class DisableWatch;

  // Begun inside a callback, which has returned.
  void outside(const std::shared_ptr<AfterCallback>& self) override;
  void startGracePeriod(std::chrono::milliseconds length);
  void awaitMessage();
  bool awaitCompletion(std::chrono::milliseconds timeout);
  std::shared_ptr<OrbIpcClientSession> session() const;
  bool wasLast() const;

  enum class Message { Unclaimed, Claimed, Sent };

  // Made beforehand; each is used up by one step.
  Place mPlace{1};                     // among the disables of an endpoint
  Place mWatchPlace{1};                // in the queue of DisableWatch
  SdkClientBase::Posting mPosting;     // of the cleanup event
  std::shared_ptr<SdkClient> mClient;  // set by begin()

  mutable Mutex mMutex;
  Condition mCompleted;
  Condition mMessageTried;
  Message mMessage ORB_GUARDED_BY(mMutex) = Message::Unclaimed;
  Clock::time_point mGracePeriodEnd ORB_GUARDED_BY(mMutex) = Clock::time_point::max();
  bool mDone ORB_GUARDED_BY(mMutex) = false;
  bool mLast ORB_GUARDED_BY(mMutex) = false;
  std::shared_ptr<OrbIpcClientSession> mSession ORB_GUARDED_BY(mMutex);
};
