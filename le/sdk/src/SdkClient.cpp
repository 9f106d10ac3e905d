// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Sessions of the SDK client: connecting, sending, receiving. Joining and leaving is in
// SdkClientInstance.cpp.
#include "SdkClient.h"

#include <utility>

#include "SdkClientEndpoint.h"
#include "SdkLog.h"

SdkClient::SdkClient(std::unique_ptr<OrbTimer> timer, OwnedEventManager eventManager)
    : SdkClientLoop(std::move(timer), std::move(eventManager)),
      SdkClientBase(mOwnedTimer.get(), mOwnedEventManager.get()) {}

SdkClient::~SdkClient() {
  SDK_LOG(kSdkClientTag, "dtor");
  for (auto& [endpoint, session] : mOrbIpcSession) {
    if (session) session->cleanup();
  }
}

SdkClient::Session SdkClient::sessionOf(OrbSdkClientType type) {
  const LockGuard lock(mLock);
  const auto found = mOrbIpcSession.find(endpointOf(type));
  return found == mOrbIpcSession.end() ? nullptr : found->second;
}

bool SdkClient::isConnected(OrbSdkClientType type) {
  const Session session = sessionOf(type);
  return session && session->isConnected();
}

// The session to connect, made when there is none. Empty for a type on its way out that has used up
// its patience: nobody would close what it opens now.
SdkClient::Session SdkClient::sessionToConnect(OrbSdkClientType type) {
  Session session = sessionOf(type);
  if (!session) session = createOrbSdkClient(endpointOf(type));
  const LockGuard lock(mLock);
  if (const auto departure = firstDeparture(type)) {
    if (departure->patienceOver()) return nullptr;
    session->mute();
    session->stopRetrying();
  }
  mOrbIpcSession[endpointOf(type)] = session;
  return session;
}

void SdkClient::connectOrbSdkClient(OrbSdkClientType type) {
  const Session session = sessionToConnect(type);
  if (session && !session->isConnected()) {
    // The session must not keep the client alive: the client owns it.
    const std::weak_ptr<SdkClientBase> self = weak_from_this();
    session->connectToServer([self, type, weak = std::weak_ptr(session)](bool connected) {
      const auto client = std::static_pointer_cast<SdkClient>(self.lock());
      if (client) client->handleConnectionStatus(connected, type, weak.lock().get());
    });
  }
  SDK_LOG(kSdkClientTag, "IsConnected: %d", session && session->isConnected() ? 1 : 0);
}

// On the worker for the result of a connect, on the receiver for the loss of the connection. A
// muted session, one that is closed on purpose, has nothing to report.
void SdkClient::handleConnectionStatus(bool connected, OrbSdkClientType type,
                                       const OrbIpcClientSession* session) {
  SDK_LOG(kSdkClientTag, "handleConnectionStatus: %d type: %d", connected ? 1 : 0,
          static_cast<int>(type));
  Listeners listeners;
  {
    // Under one lock with mute(): a listener that comes after it is not told about this connection.
    const LockGuard lock(mLock);
    if (session && session->muted()) return;
    if (connected) {
      listeners[0] = knownListener(type);
    } else {
      listeners = mListeners;
    }
  }
  callAll(listeners, connected ? ServiceUp : ServiceDown);
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
  entry.handler = [self, weak = std::weak_ptr(session)](const std::shared_ptr<OrbIpcMessage>& msg) {
    const auto client = std::static_pointer_cast<SdkClient>(self.lock());
    if (!client) return;
    client->handleSendBlobMessage(std::static_pointer_cast<SendBlobMessage>(msg),
                                  weak.lock().get());
  };
  session->registerForMessages({{SendBlobMessage::ID, entry}});
  return session;
}

bool SdkClient::sendBlobToService(OrbSdkClientType type, std::vector<uint8_t> blob) {
  const Session session = sessionOf(type);
  if (!session) {
    SDK_LOG(kSdkClientTag, "mOrbIpcSession for OrbSdkClientType %d is not found",
            static_cast<int>(type));
    return false;
  }
  const SendTurn turn(*this, type, blob);
  return turn && session->send(
                     std::make_shared<SendBlobMessage>(convertSdkTypeToIpc(type), std::move(blob)));
}

SdkClient::SendTurn::SendTurn(SdkClient& client, OrbSdkClientType type,
                              const std::vector<uint8_t>& blob)
    : mClient(client) {
  const LockGuard lock(client.mLock);
  const auto departure = client.firstDeparture(type);
  mGranted = !departure || !departure->patienceOver();
  if (!mGranted) return;
  client.mSending = type;
  if (departure && blob == departure->mFarewell->blob && departure->claimFarewell()) {
    mFarewellOf = departure;
  }
}

SdkClient::SendTurn::~SendTurn() {
  if (mFarewellOf) mFarewellOf->noteFarewellSaid();
  {
    const LockGuard lock(mClient.mLock);
    mClient.mSending = OrbSdkClientType::None;
  }
  mClient.mTurnEnded.notify_all();
}

void SdkClient::handleSendBlobMessage(const std::shared_ptr<SendBlobMessage>& msg,
                                      const OrbIpcClientSession* session) {
  SDK_LOG(kSdkClientTag, "handleSendBlobMessage");
  if (!msg) return;
  const OrbSdkClientType type = convertSdkTypeToSdk(msg->type());
  ListenerRef listener;
  {
    const LockGuard lock(mLock);
    if (session && session->muted()) return;
    listener = knownListener(type);
  }
  deliverBlob(type, listener, msg->blob());
}
