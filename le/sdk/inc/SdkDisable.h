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

// The disable of one client type, from the cleanup event until the worker has deactivated the type.
// It is made when the type joins, with all the memory that the disable needs. The thread that
// disables begins and finishes it; the worker completes it. The disable message is sent once, by
// the thread that claims it first: the worker, or after the grace period the thread that forces the
// disable. mMutex guards what follows it.
class SdkDisable : public AfterCallback {
 public:
  using Clock = std::chrono::steady_clock;
  using Place = std::list<std::shared_ptr<SdkDisable>>;

  // @p cleanup is the type's cleanup event, which carries the disable message.
  explicit SdkDisable(std::shared_ptr<SdkClientEvent> cleanup);

  const std::shared_ptr<SdkClientEvent> mCleanup;
  const OrbSdkClientType mType;

  // First half: stops the delivery of the type's session and posts the cleanup event to @p client.
  // Allocates nothing and cannot fail.
  static void begin(const std::shared_ptr<SdkDisable>& disable, std::shared_ptr<SdkClient> client);
  // Second half: waits until the worker has sent what is queued and has deactivated the type. If
  // that takes longer than the grace period, it forces the disable: the daemon may be absent, not
  // answer or not read, or the worker may be in a connect or a callback of another type. Returns
  // within half a second.
  void finish();
  // The second half for a caller who must not wait: a thread of the library forces the disable
  // after the grace period.
  static void finishLater(const std::shared_ptr<SdkDisable>& disable);
  // Waits for the rest of the grace period. False if the type is still active then.
  bool awaitGracePeriod();
  // How long a daemon that reads slowly has to make room for the disable message.
  static constexpr std::chrono::milliseconds kRoom{80};
  // Ends the grace period: sends the disable message on a connected session and closes it. Before
  // that it waits at most @p room, for the end of a message that the worker is sending and for room
  // in the socket. The worker deactivates the type later, when it handles the cleanup event.
  void force(std::chrono::milliseconds room = kRoom);

  // After the grace period the type neither connects nor sends.
  bool gracePeriodOver() const;
  // True for the one caller that is to send the disable message. It calls noteMessageSent() after
  // it has tried.
  bool claimMessage();
  void noteMessageSent();
  // Sends the disable message on @p session, and waits for room until @p roomBy. If another thread
  // is sending it, waits until that has tried.
  void sendMessage(OrbIpcClientSession& session, Clock::time_point roomBy = {});
  // On the worker: the type is deactivated. @p session was its session, null without one. @p last:
  // no type is active any more, the worker ends.
  void complete(std::shared_ptr<OrbIpcClientSession> session, bool last);

 private:
  friend class DisableWatch;

  // The disable began inside a callback, which has returned now.
  void outside(const std::shared_ptr<AfterCallback>& self) override;
  void startGracePeriod(std::chrono::milliseconds length);
  Clock::time_point gracePeriodEnd() const;
  void awaitMessage();
  bool awaitCompletion(std::chrono::milliseconds timeout);
  std::shared_ptr<OrbIpcClientSession> session() const;
  bool wasLast() const;

  enum class Message { Unclaimed, Claimed, Sent };

  // Allocated in advance; each is used by one step.
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
