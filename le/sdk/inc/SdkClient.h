// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <deque>
#include <map>
#include <memory>
#include <vector>

#include "Mutex.h"
#include "OrbIpcClientSession.h"
#include "SdkClientBase.h"
#include "SdkDeparture.h"
#include "SendBlobMessage.h"

// Timer queue and event manager of an SDK client. A base of its own so that both outlive the event
// handler, which takes its descriptor out of the manager when it is destroyed.
class SdkClientLoop {
 protected:
  SdkClientLoop(std::unique_ptr<OrbTimer> timer,
                std::unique_ptr<orb::utils::EventManager> eventManager);
  SdkClientLoop(const SdkClientLoop&) = delete;
  SdkClientLoop& operator=(const SdkClientLoop&) = delete;
  ~SdkClientLoop();

  const std::unique_ptr<OrbTimer> mOwnedTimer;
  std::unique_ptr<orb::utils::EventManager> mOwnedEventManager;
};

// The process's SDK client: one session to the daemon per endpoint, blobs out and in. Held by the
// service objects that use it, by its worker thread and, while a type is active, as the instance
// that others join. Joining, and leaving with the question whether that was the last type, are
// decided under one lock, the instance lock; the inherited mLock, taken after it, guards sessions
// and departures. No lock is held while a session connects, sends or is waited for.
class SdkClient : private SdkClientLoop, public SdkClientBase {
 public:
  SdkClient(std::unique_ptr<OrbTimer> timer,
            std::unique_ptr<orb::utils::EventManager> eventManager);
  ~SdkClient() override;

  // Joins the running client, or creates it, for @p type. The listener is in place before @p event
  // can have an effect. Empty when the running client cannot be joined or no thread could be
  // started.
  static std::shared_ptr<SdkClient> getInstance(OrbSdkClientType type, Listener listener,
                                                std::shared_ptr<SdkClientEvent> event);
  // Retires @p type without a farewell message and waits as finishDeparture() does.
  static void destroyInstance(OrbSdkClientType type);

  // Leaving in two halves. The first names the moment: what the type's connection still receives or
  // reports from now on is dropped. It posts @p farewell, the type's cleanup event.
  std::shared_ptr<SdkDeparture> beginDeparture(std::shared_ptr<SdkClientEvent> farewell);
  // The second waits for the worker to send what is queued and to retire the type. A worker that
  // does not get there in time (daemon absent, silent or not reading, another type's connect or
  // callback under way) is freed by closing the connection; a healthy one is told the farewell
  // before. Bounded: returns well within half a second.
  static void finishDeparture(SdkDeparture& departure);
  // Instead of the second half when nobody can wait for the worker, which retires the type when it
  // gets there: a connection that stands gets the farewell and is closed here and now.
  static void leaveDepartureToWorker(SdkDeparture& departure);

  void connectOrbSdkClient(OrbSdkClientType type) override;
  bool isConnected(OrbSdkClientType type) override;
  bool sendBlobToService(OrbSdkClientType type, std::vector<uint8_t> blob) override;

 protected:
  bool retireType(OrbSdkClientType type) override;
  bool isLeaving(OrbSdkClientType type) override;

 private:
  using Session = std::shared_ptr<OrbIpcClientSession>;

  static std::shared_ptr<SdkClient> createInstance(OrbSdkClientType type, Listener listener,
                                                   std::shared_ptr<SdkClientEvent> event);
  static std::shared_ptr<SdkClient> joinInstance(const std::shared_ptr<SdkClient>& instance,
                                                 OrbSdkClientType type, Listener listener,
                                                 std::shared_ptr<SdkClientEvent> event);
  static std::shared_ptr<SdkClient> startInstance(OrbSdkClientType type, Listener listener,
                                                  std::shared_ptr<SdkClientEvent> event);
  static void abandonDeparture(SdkDeparture& departure);
  bool mayBidFarewell(SdkDeparture& departure);
  void bidFarewell(SdkDeparture& departure, const Session& session);
  void addListener(OrbSdkClientType type);
  Session sessionLeavingWith(const SdkDeparture& departure);
  Session createOrbSdkClient(ProcessId id);
  Session sessionOf(OrbSdkClientType type);
  Session sessionToConnect(OrbSdkClientType type);
  void handleSendBlobMessage(const std::shared_ptr<SendBlobMessage>& msg,
                             const OrbIpcClientSession* session);
  void handleConnectionStatus(bool connected, OrbSdkClientType type,
                              const OrbIpcClientSession* session);

  // The worker's turn to send for a type; one at a time.
  class SendTurn {
   public:
    SendTurn(SdkClient& client, OrbSdkClientType type, const std::vector<uint8_t>& blob);
    SendTurn(const SendTurn&) = delete;
    SendTurn& operator=(const SendTurn&) = delete;
    ~SendTurn();
    // False for a type that has used up its patience: its farewell is said by others.
    explicit operator bool() const { return mGranted; }

   private:
    SdkClient& mClient;
    bool mGranted = false;
  };

  // Guarded by mLock.
  OrbSdkClientType mSending ORB_GUARDED_BY(mLock) = OrbSdkClientType::None;  // whose turn it is
  Condition mTurnEnded;
  std::map<ProcessId, Session> mOrbIpcSession ORB_GUARDED_BY(mLock);
  std::map<OrbSdkClientType, std::deque<std::shared_ptr<SdkDeparture>>> mDepartures
      ORB_GUARDED_BY(mLock);
};
