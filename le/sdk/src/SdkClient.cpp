// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Sessions of the SDK client: connecting, sending, receiving. Joining and the end of the last type
// are in SdkClientInstance.cpp.
#include "SdkClient.h"

#include <algorithm>
#include <utility>

#include "SdkLog.h"

SdkClient::SdkClient(std::unique_ptr<OrbTimer> timer, OwnedEventManager eventManager)
    : SdkClientLoop(std::move(timer), std::move(eventManager)),
      SdkClientBase(mOwnedTimer.get(), mOwnedEventManager.get()) {}

SdkClient::~SdkClient() {
  SDK_LOG(kSdkClientTag, "dtor");
  for (EndpointState& state : mEndpoints) {
    if (state.session) state.session->cleanup();
  }
}

bool SdkClient::isConnected(OrbSdkClientType type) {
  const LockGuard lock(mLock);
  const Session& session = stateOf(type).session;
  return session && session->isConnected();
}

// The session to connect; created if there is none. Empty for a disabled type whose grace period is
// over: no thread would close it any more.
SdkClient::Session SdkClient::sessionToConnect(OrbSdkClientType type) {
  Session session;
  {
    const LockGuard lock(mLock);
    session = stateOf(type).session;
  }
  if (!session) session = createOrbSdkClient(endpointOf(type));
  const LockGuard lock(mLock);
  EndpointState& state = stateOf(type);
  const auto disable = oldestDisable(state, type);
  if (disable != state.disables.end()) {
    if ((*disable)->gracePeriodOver()) return nullptr;
    session->stopDelivery();
    session->stopRetrying();
  }
  state.session = session;
  return session;
}

void SdkClient::connectOrbSdkClient(OrbSdkClientType type) {
  const Session session = sessionToConnect(type);
  if (session && !session->isConnected()) {
    // The session must not keep the client alive: the client owns it. It calls what it owns.
    const std::weak_ptr<SdkClientBase> self = weak_from_this();
    session->connectToServer([self, type, from = session.get()](bool connected) {
      const auto client = std::static_pointer_cast<SdkClient>(self.lock());
      if (client) client->handleConnectionStatus(connected, type, *from);
    });
  }
  SDK_LOG(kSdkClientTag, "IsConnected: %d", session && session->isConnected() ? 1 : 0);
}

// On the worker for the result of a connect, on the receiver for the loss of the connection.
void SdkClient::handleConnectionStatus(bool connected, OrbSdkClientType type,
                                       const OrbIpcClientSession& session) {
  SDK_LOG(kSdkClientTag, "handleConnectionStatus: %d type: %d", connected ? 1 : 0,
          static_cast<int>(type));
  if (connected) {
    notifyServiceUp(type, &session.deliveryStopped());
  } else {
    notifyServiceDown(&session.deliveryStopped());
  }
}

SdkClient::Session SdkClient::createOrbSdkClient(ProcessId id) {
  SDK_LOG(kSdkClientTag, "IPC type: %d", static_cast<int>(id));
  const Session session = std::make_shared<OrbIpcClientSession>(id, false);
  const std::weak_ptr<SdkClientBase> self = weak_from_this();
  IpcMsgConstructorHandlerPair_t entry;
  entry.constructor = [](std::vector<unsigned char> payload) -> std::shared_ptr<OrbIpcMessage> {
    if (payload.size() < SendBlobMessage::kTypeSize) return nullptr;
    auto message = std::make_shared<SendBlobMessage>();
    message->deserialize(std::move(payload));
    return message;
  };
  entry.handler = [self, from = session.get()](const std::shared_ptr<OrbIpcMessage>& msg) {
    const auto client = std::static_pointer_cast<SdkClient>(self.lock());
    if (!client) return;
    client->handleSendBlobMessage(std::static_pointer_cast<SendBlobMessage>(msg), *from);
  };
  session->registerForMessages({{SendBlobMessage::ID, entry}});
  return session;
}

bool SdkClient::sendBlobToService(OrbSdkClientType type, std::vector<uint8_t> blob) {
  return WorkerSend(*this, type).send(std::move(blob));
}

bool SdkClient::sendDisableMessage(SdkClientEvent& event) {
  return WorkerSend(*this, event.type, &event).send(std::move(event.blob));
}

SdkClient::WorkerSend::WorkerSend(SdkClient& client, OrbSdkClientType type,
                                  const SdkClientEvent* cleanup)
    : mClient(client), mType(type) {
  const LockGuard lock(client.mLock);
  EndpointState& state = client.stateOf(type);
  mSession = state.session;
  const auto disable = client.oldestDisable(state, type);
  const bool disabled = disable != state.disables.end();
  if (!mSession || (disabled && (*disable)->gracePeriodOver())) return;
  if (disabled && (*disable)->mCleanup.get() == cleanup) {
    if (!(*disable)->claimMessage()) return;
    mMessageOf = *disable;
  }
  mGranted = true;
  state.sending = true;
}

SdkClient::WorkerSend::~WorkerSend() {
  if (!mGranted) return;
  if (mMessageOf) mMessageOf->noteMessageSent();
  {
    const LockGuard lock(mClient.mLock);
    mClient.stateOf(mType).sending = false;
  }
  mClient.mSendEnded.notify_all();
}

bool SdkClient::WorkerSend::send(std::vector<uint8_t>&& blob) const {
  if (!mSession) {
    SDK_LOG_AS(kSdkClientTag, __FILE__, "sendBlobToService",
               "mOrbIpcSession for OrbSdkClientType %d is not found", static_cast<int>(mType));
  }
  return mGranted && mSession->send(std::make_shared<SendBlobMessage>(convertSdkTypeToIpc(mType),
                                                                      std::move(blob)));
}

void SdkClient::handleSendBlobMessage(const std::shared_ptr<SendBlobMessage>& msg,
                                      const OrbIpcClientSession& session) {
  SDK_LOG(kSdkClientTag, "handleSendBlobMessage");
  if (!msg) return;
  notifyReceivedBlob(convertSdkTypeToSdk(msg->type()), msg->blob(), &session.deliveryStopped());
}

void SdkClient::noteDisable(OrbSdkClientType type, SdkDisable::Place place) {
  const LockGuard lock(mLock);
  EndpointState& state = stateOf(type);
  state.disables.splice(state.disables.end(), place);
  if (!state.session) return;
  state.session->stopDelivery();
  state.session->stopRetrying();
}

SdkDisable::Place::iterator SdkClient::oldestDisable(EndpointState& state, OrbSdkClientType type) {
  return std::find_if(state.disables.begin(), state.disables.end(),
                      [type](const auto& each) { return each->mType == type; });
}

bool SdkClient::isBeingDisabled(OrbSdkClientType type) {
  const LockGuard lock(mLock);
  EndpointState& state = stateOf(type);
  return oldestDisable(state, type) != state.disables.end();
}

SdkClient::Session SdkClient::sessionOf(const SdkDisable& disable) {
  const LockGuard lock(mLock);
  EndpointState& state = stateOf(disable.mType);
  const auto oldest = oldestDisable(state, disable.mType);
  const bool ours = oldest != state.disables.end() && oldest->get() == &disable;
  return ours ? state.session : nullptr;
}

bool SdkClient::awaitSendEnd(OrbSdkClientType type, std::chrono::milliseconds timeout) {
  UniqueLock lock(mLock);
  return mSendEnded.wait_for(lock, timeout,
                             [&]() ORB_REQUIRES(mLock) { return !stateOf(type).sending; });
}
