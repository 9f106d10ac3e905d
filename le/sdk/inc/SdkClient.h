// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <list>
#include <map>
#include <memory>
#include <vector>

#include "Mutex.h"
#include "OrbIpcClientSession.h"
#include "SdkClientBase.h"
#include "SdkDeparture.h"
#include "SendBlobMessage.h"

// Deletes an event manager whose loop runs no more: removals that wait for the next pass get it
// here, and the manager's own two descriptors, which it leaves open, are closed after it.
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

// The process's SDK client: one session to the daemon per endpoint, blobs out and in. Held by the
// service objects that use it, by its worker thread and, while a type is active, as the instance
// that others join. Joining, and leaving with the question whether that was the last type, are
// decided under one lock, the instance lock; the inherited mLock, taken after it, guards sessions
// and departures. No lock is held while a session connects, sends or is waited for.
class SdkClient : private SdkClientLoop, public SdkClientBase {
 public:
  SdkClient(std::unique_ptr<OrbTimer> timer, OwnedEventManager eventManager);
  ~SdkClient() override;

  // Joins the running client, or creates it, for @p type. The listener is in place before @p event
  // can have an effect. Empty when the running client cannot be joined or there was no thread or
  // memory to be had; nothing has changed then.
  static std::shared_ptr<SdkClient> getInstance(OrbSdkClientType type, Listener listener,
                                                std::shared_ptr<SdkClientEvent> event);
  // Retires @p type without a farewell message and waits as finishDeparture() does.
  static void destroyInstance(OrbSdkClientType type);

  // Leaving in two halves. The first names the moment: what the type's connection still receives or
  // reports from now on is dropped. It posts the farewell, the type's cleanup event. Cannot fail.
  void beginDeparture(const std::shared_ptr<SdkDeparture>& departure);
  // The second waits for the worker to send what is queued and to retire the type. A worker that
  // does not get there in time (daemon absent, silent or not reading, another type's connect or
  // callback under way) is freed by closing the connection; a healthy one is told the farewell
  // before. Bounded: returns well within half a second.
  static void finishDeparture(SdkDeparture& departure);
  // The second half for a caller who may not wait: a thread of the library sees to it that the
  // worker is freed in time.
  static void watchDeparture(const std::shared_ptr<SdkDeparture>& departure);
  // Instead of the second half when nobody can wait for the worker, which retires the type when it
  // gets there: a connection that stands gets the farewell and is closed here and now.
  static void abandonDeparture(SdkDeparture& departure);

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
  void cancelJoining(OrbSdkClientType type);
  bool awaitTurnEnd(OrbSdkClientType type);
  static void sayFarewell(SdkDeparture& departure, const Session& session);
  void addListener(OrbSdkClientType type);
  Session sessionLeavingWith(const SdkDeparture& departure);
  // The oldest departure of @p type, or empty.
  std::shared_ptr<SdkDeparture> firstDeparture(OrbSdkClientType type) const ORB_REQUIRES(mLock);
  std::shared_ptr<SdkDeparture> takeFirstDeparture(OrbSdkClientType type) ORB_REQUIRES(mLock);
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
    std::shared_ptr<SdkDeparture> mFarewellOf;  // set when the blob is its farewell
  };

  // Guarded by mLock.
  OrbSdkClientType mSending ORB_GUARDED_BY(mLock) = OrbSdkClientType::None;  // whose turn it is
  Condition mTurnEnded;
  std::map<ProcessId, Session> mOrbIpcSession ORB_GUARDED_BY(mLock);
  SdkDeparture::Place mDepartures ORB_GUARDED_BY(mLock);  // of all types, oldest first
};
