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
  ConnectionCallback dropped;
  {
    const LockGuard lock(mCallbackLock);
    dropped.swap(mCallback);
  }
  stopHandlerThread();
  deregisterReceiverHandler();
  cleanup();  // here, while a receiver that is still in a call finds this class complete
}

void OrbIpcClientSession::connectToServer(ConnectionCallback callback) {
  {
    const LockGuard lock(mCallbackLock);
    mCallback.swap(callback);
  }
  callback = nullptr;  // the former one goes outside the lock
  postToSelf(std::make_shared<OrbIpcConnectToServerMessage>());
}

void OrbIpcClientSession::notifyConnectionStatus(bool connected) {
  ORB_LOGI("notifyConnectionStatus: %d", connected ? 1 : 0);
  ConnectionCallback callback;
  {
    const LockGuard lock(mCallbackLock);
    callback = mCallback;
  }
  if (callback) callback(connected);
}
