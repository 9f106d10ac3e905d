// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <array>
#include <chrono>
#include <memory>
#include <utility>
#include <vector>

#include "Mutex.h"
#include "OrbIpcClientSession.h"
#include "SdkClientBase.h"
#include "SdkClientEndpoint.h"
#include "SdkDisable.h"
#include "SendBlobMessage.h"

// Deletes an event manager whose loop has ended. It makes the last removal pass, and afterwards
// closes the manager's own two descriptors, which the manager leaves open.
struct EventManagerCloser {
  void operator()(orb::utils::EventManager* manager) const;
};
using OwnedEventManager = std::unique_ptr<orb::utils::EventManager, EventManagerCloser>;

// Timer queue and event manager of an SDK client. A base of its own so that both outlive the event
// handler, which takes its descriptor out of the manager when it is destroyed.
class SdkClientLoop {
 protected:
  SdkClientLoop(std::unique_ptr<OrbTimer> timer, OwnedEventManager eventManager)
      : mOwnedTimer(std::move(timer)), mOwnedEventManager(std::move(eventManager)) {}
  SdkClientLoop(const SdkClientLoop&) = delete;
  SdkClientLoop& operator=(const SdkClientLoop&) = delete;

  const std::unique_ptr<OrbTimer> mOwnedTimer;
  const OwnedEventManager mOwnedEventManager;
};

// The process's SDK client: one session to the daemon per endpoint, blobs out and in. The service
// objects that use it and its worker thread hold it; while a type is active, it is also the
// instance that others join. The instance lock (SdkClientInstance.cpp) decides two things: whether
// a thread joins this client, and whether a deactivated type was the last one. The inherited mLock
// is locked after it and guards what belongs to an endpoint. No lock is held while a session
// connects or sends, or during a wait. How a type is disabled is in SdkDisable.
class SdkClient : private SdkClientLoop, public SdkClientBase {
 public:
  SdkClient(std::unique_ptr<OrbTimer> timer, OwnedEventManager eventManager);
  ~SdkClient() override;

  // Joins the running client for @p type, or creates one. It sets the listener before @p event can
  // have an effect. Empty if the running client cannot be joined, or if there is no thread or no
  // memory; nothing has changed then.
  static std::shared_ptr<SdkClient> getInstance(OrbSdkClientType type, Listener listener,
                                                std::shared_ptr<SdkClientEvent> event);
  // Disables @p type without a disable message.
  static void destroyInstance(OrbSdkClientType type);

  void connectOrbSdkClient(OrbSdkClientType type) override;
  bool isConnected(OrbSdkClientType type) override;
  bool sendBlobToService(OrbSdkClientType type, std::vector<uint8_t> blob) override;

  // For SdkDisable, as the three below. Notes that @p type is being disabled: stops the delivery of
  // its session, which does not try to connect again.
  void noteDisable(OrbSdkClientType type, SdkDisable::Place place);
  // The session of the type while @p disable is its oldest disable; else null. After the worker has
  // completed the disable, a new session of the type does not belong to it.
  std::shared_ptr<OrbIpcClientSession> sessionOf(const SdkDisable& disable);
  // Waits until the worker is not sending for @p type. False after the timeout.
  bool awaitSendEnd(OrbSdkClientType type, std::chrono::milliseconds timeout);
  void awaitWorkerEnd(std::chrono::milliseconds timeout) { mLife->awaitEnd(timeout); }

 protected:
  bool sendDisableMessage(SdkClientEvent& event) override;
  bool deactivateType(OrbSdkClientType type) override;
  bool isBeingDisabled(OrbSdkClientType type) override;

 private:
  using Session = std::shared_ptr<OrbIpcClientSession>;

  // What belongs to one endpoint, which several client types may share.
  struct EndpointState {
    Session session;             // empty before the first connect
    SdkDisable::Place disables;  // of its types, oldest first
    bool sending = false;        // the worker is in a send
  };

  static std::shared_ptr<SdkClient> createInstance(OrbSdkClientType type, Listener listener,
                                                   std::shared_ptr<SdkClientEvent> event);
  static std::shared_ptr<SdkClient> joinInstance(const std::shared_ptr<SdkClient>& instance,
                                                 OrbSdkClientType type, Listener listener,
                                                 std::shared_ptr<SdkClientEvent> event);
  static std::shared_ptr<SdkClient> startInstance(OrbSdkClientType type, Listener listener,
                                                  std::shared_ptr<SdkClientEvent> event);
  void cancelJoining(OrbSdkClientType type);

  EndpointState& stateOf(OrbSdkClientType type) ORB_REQUIRES(mLock) {
    return mEndpoints[endpointIndex(endpointOf(type))];
  }
  // The oldest disable of @p type, or the end.
  SdkDisable::Place::iterator oldestDisable(EndpointState& state, OrbSdkClientType type)
      ORB_REQUIRES(mLock);
  // A new session for the endpoint, with the handler of its messages.
  Session createOrbSdkClient(ProcessId id);
  Session sessionToConnect(OrbSdkClientType type);
  void handleSendBlobMessage(const std::shared_ptr<SendBlobMessage>& msg,
                             const OrbIpcClientSession& session);
  void handleConnectionStatus(bool connected, OrbSdkClientType type,
                              const OrbIpcClientSession& session);

  // One send of the worker. One look-up gives the session, and says whether the worker may send:
  // not for a type whose grace period is over, because another thread then sends the disable
  // message.
  class WorkerSend {
   public:
    // @p cleanup: the cleanup event whose disable message is to be sent, if it is that.
    WorkerSend(SdkClient& client, OrbSdkClientType type, const SdkClientEvent* cleanup = nullptr);
    WorkerSend(const WorkerSend&) = delete;
    WorkerSend& operator=(const WorkerSend&) = delete;
    ~WorkerSend();
    // Moves from @p blob only if it may send.
    bool send(std::vector<uint8_t>&& blob) const;

   private:
    SdkClient& mClient;
    const OrbSdkClientType mType;
    Session mSession;
    bool mGranted = false;
    std::shared_ptr<SdkDisable> mMessageOf;  // set when it is the one to send the disable message
  };

  Condition mSendEnded;
  std::array<EndpointState, kSdkClientEndpoints> mEndpoints ORB_GUARDED_BY(mLock);
};
