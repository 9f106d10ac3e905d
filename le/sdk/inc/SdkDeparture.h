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

// One client type on its way out, from the moment its farewell, the cleanup event, is posted until
// the worker has retired it. Made when the type joins, with all the memory that leaving takes,
// begun and waited for by the thread that disables, completed by the worker. The farewell is said
// once, by the worker or by who has no more patience with it. mMutex guards what follows it.
class SdkDeparture : public AfterCallback {
 public:
  using Clock = std::chrono::steady_clock;

  explicit SdkDeparture(std::shared_ptr<SdkClientEvent> farewell);

  const std::shared_ptr<SdkClientEvent> mFarewell;
  const OrbSdkClientType mType;

  // Used up by SdkClient::beginDeparture(), which names the client, and by DepartureWatch::add().
  using Place = std::list<std::shared_ptr<SdkDeparture>>;
  std::shared_ptr<SdkClient> mClient;
  Place mPlace{1};
  Place mWatchPlace{1};
  SdkClientBase::Posting mPosting;

  // From now on the type may still connect and send for the length of @p patience.
  void startPatience(std::chrono::milliseconds patience);
  bool patienceOver() const;
  // Waits until the type is retired; false when patience is over before that.
  bool awaitPatience();

  // Whether the caller is the one to say the farewell; it then tells when it has tried.
  bool claimFarewell();
  void noteFarewellSaid();
  // Waits for the one who has claimed it.
  void awaitFarewell();
  // The type is retired; @p session was its connection, @p last tells that the worker ends.
  void complete(std::shared_ptr<OrbIpcClientSession> session, bool last);
  // False when the type was not retired within @p timeout.
  bool await(std::chrono::milliseconds timeout);
  std::shared_ptr<OrbIpcClientSession> session() const;
  bool wasLast() const;

 private:
  // Begun inside a callback, which has returned.
  void outside(const std::shared_ptr<AfterCallback>& self) override;

  enum class Farewell { Open, Claimed, Said };

  mutable Mutex mMutex;
  Condition mCompleted;
  Condition mFarewellTried;
  Farewell mFarewellState ORB_GUARDED_BY(mMutex) = Farewell::Open;
  Clock::time_point mPatienceEnd ORB_GUARDED_BY(mMutex) = Clock::time_point::max();
  bool mDone ORB_GUARDED_BY(mMutex) = false;
  bool mLast ORB_GUARDED_BY(mMutex) = false;
  std::shared_ptr<OrbIpcClientSession> mSession ORB_GUARDED_BY(mMutex);
};
