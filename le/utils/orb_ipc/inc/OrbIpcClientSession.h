// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <atomic>
#include <functional>
#include <memory>

#include "Mutex.h"
#include "OrbIpcSession.h"

// The session of an SDK client: its peer is the daemon, and every change of the connection goes to
// one callback. The callback runs on the thread that asked to connect for the result, on the
// receiver thread for the loss, with no lock held. mCallbackLock guards the callback.
class OrbIpcClientSession : public OrbIpcSession {
 public:
  using ConnectionCallback = std::function<void(bool connected)>;

  OrbIpcClientSession(ProcessId own, bool ownThread);
  ~OrbIpcClientSession() override;

  // Connects, and reports the result to @p callback. A session without a thread of its own does
  // both on the calling thread, before this returns. On a connected session it only replaces the
  // callback.
  void connectToServer(ConnectionCallback callback);

  // For the owner of a session that is to be closed. The session only keeps the flag: the owner
  // reads it and drops what the session still receives or reports.
  void stopDelivery() { mDeliveryStopped = true; }
  const std::atomic<bool>& deliveryStopped() const { return mDeliveryStopped; }

 protected:
  void notifyConnectionStatus(bool connected) override;

 private:
  std::atomic<bool> mDeliveryStopped{false};
  Mutex mCallbackLock;
  // Shared, because a copy would need memory when the connection is lost.
  std::shared_ptr<const ConnectionCallback> mCallback ORB_GUARDED_BY(mCallbackLock);
};
