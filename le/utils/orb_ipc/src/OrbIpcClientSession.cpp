// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "OrbIpcClientSession.h"

#include <cstdint>
#include <utility>

namespace {

// The log shows addresses by their low 32 bits.
unsigned int shortAddress(const void* object) {
  return static_cast<unsigned int>(reinterpret_cast<uintptr_t>(object));
}

}  // namespace

OrbIpcClientSession::OrbIpcClientSession(ProcessId own, bool ownThread)
    : OrbIpcSession(-1, 0, own, ProcessId::Daemon, ownThread) {
  ORB_LOGI("ctor[%x]", shortAddress(this));
}

OrbIpcClientSession::~OrbIpcClientSession() {
  ORB_LOGI("dtor: ENTER[ %x]", shortAddress(this));
  std::shared_ptr<const ConnectionCallback> dropped;
  {
    const LockGuard lock(mCallbackLock);
    dropped.swap(mCallback);
  }
  stopHandlerThread();
  deregisterReceiverHandler();
  cleanup();  // here, while a receiver that is still in a call finds this class complete
}

void OrbIpcClientSession::connectToServer(ConnectionCallback callback) {
  auto exchanged = std::make_shared<const ConnectionCallback>(std::move(callback));
  {
    const LockGuard lock(mCallbackLock);
    mCallback.swap(exchanged);
  }
  exchanged.reset();  // the former one goes outside the lock
  postToSelf(std::make_shared<OrbIpcConnectToServerMessage>());
}

void OrbIpcClientSession::notifyConnectionStatus(bool connected) {
  ORB_LOGI("notifyConnectionStatus: %d", connected ? 1 : 0);
  std::shared_ptr<const ConnectionCallback> callback;
  {
    const LockGuard lock(mCallbackLock);
    callback = mCallback;
  }
  if (callback && *callback) (*callback)(connected);
}
