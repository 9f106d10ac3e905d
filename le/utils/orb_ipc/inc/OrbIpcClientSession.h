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

  // Connects at once on the calling thread (without a thread of the session's own) and reports the
  // result before it returns. On a connected session it only replaces the callback.
  void connectToServer(ConnectionCallback callback);

  // A muted session is on its way out: what it still receives or reports is nobody's business.
  void mute() { mMuted = true; }
  bool muted() const { return mMuted; }

 protected:
  void notifyConnectionStatus(bool connected) override;

 private:
  std::atomic<bool> mMuted{false};
  Mutex mCallbackLock;
  // Shared, because a copy would need memory when the connection is lost.
  std::shared_ptr<const ConnectionCallback> mCallback ORB_GUARDED_BY(mCallbackLock);
};
