// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <chrono>
#include <list>
#include <memory>

#include "Mutex.h"
#include "SdkClientBase.h"

class OrbIpcClientSession;
class SdkClient;

// One client type on its way out, from the moment its farewell, the cleanup event, is posted until
// the worker has retired it. Made when the type joins, with all the memory that leaving takes,
// begun and waited for by the thread that disables, completed by the worker. mMutex guards what
// follows it.
class SdkDeparture {
 public:
  using Clock = std::chrono::steady_clock;

  explicit SdkDeparture(std::shared_ptr<SdkClientEvent> farewell);

  const std::shared_ptr<SdkClientEvent> mFarewell;
  const OrbSdkClientType mType;
  bool mFarewellSaid = false;  // guarded by the lock of mClient

  // Used up by SdkClient::beginDeparture(), which names the client.
  std::shared_ptr<SdkClient> mClient;
  std::list<std::shared_ptr<SdkDeparture>> mPlace;
  SdkClientBase::Posting mPosting;

  // From now on the type may still connect and send for the length of @p patience.
  void startPatience(std::chrono::milliseconds patience);
  bool patienceOver() const;
  // The type is retired; @p session was its connection, @p last tells that the worker ends.
  void complete(std::shared_ptr<OrbIpcClientSession> session, bool last);
  // False when the type was not retired within @p timeout.
  bool await(std::chrono::milliseconds timeout);
  std::shared_ptr<OrbIpcClientSession> session() const;
  bool wasLast() const;

 private:
  mutable Mutex mMutex;
  Condition mCompleted;
  Clock::time_point mPatienceEnd ORB_GUARDED_BY(mMutex) = Clock::time_point::max();
  bool mDone ORB_GUARDED_BY(mMutex) = false;
  bool mLast ORB_GUARDED_BY(mMutex) = false;
  std::shared_ptr<OrbIpcClientSession> mSession ORB_GUARDED_BY(mMutex);
};
