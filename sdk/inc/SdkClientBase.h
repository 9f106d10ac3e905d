// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <vector>

#include "Mutex.h"
#include "OrbEventHandler.h"
#include "SdkClientEvent.h"
#include "Semaphore.h"
#include "WorkerLife.h"

// Core of the SDK client: one worker thread for all client types, a listener per type and the
// dispatch of events. handleEvent() and the pure operations run on the worker, the notify functions
// on the thread that received the message or lost the connection. mLock guards what belongs to a
// type; it is never held while a listener runs. The worker's thread holds a reference to the client
// for as long as it runs.
class SdkClientBase : public orb::utils::OrbEventHandler<std::shared_ptr<SdkClientEvent>>,
                      public std::enable_shared_from_this<SdkClientBase> {
 public:
  enum SdkStatus : int32_t { BlobReceived = 0, SendFailed = 1, ServiceDown = 2, ServiceUp = 3 };
  using Listener = std::function<void(SdkStatus, const std::vector<uint8_t>&)>;

  // Never read or changed here: services make their own transaction ids.
  static uint64_t mTransactionId;
  static uint32_t mTransactionId32;

  SdkClientBase(OrbTimer* timer, orb::utils::EventManager* eventManager);
  ~SdkClientBase() override;

  // Starts the worker, which handles @p event first. Returns when the worker runs; false if the
  // system cannot start a thread.
  bool start(OrbSdkClientType type, std::shared_ptr<SdkClientEvent> event);

  void handleEvent(std::shared_ptr<SdkClientEvent> event) override;
  virtual void connectOrbSdkClient(OrbSdkClientType type) = 0;
  virtual bool isConnected(OrbSdkClientType type) = 0;
  virtual bool sendBlobToService(OrbSdkClientType type, std::vector<uint8_t> blob) = 0;

  // Stores or replaces the listener of @p type; unknown types have none.
  void setClientListener(OrbSdkClientType type, Listener listener);
  // One more registration of @p type, which deactivateType() takes away again.
  void activateType(OrbSdkClientType type);
  bool isTypeActive(OrbSdkClientType type);
  bool isRunning() const { return mRunning; }

  // All calls of listeners go through these. A session passes its flag @p stopped, which is set
  // under mLock. Once its delivery is stopped, nothing of this session reaches a listener.
  using Stopped = std::atomic<bool>;
  void notifyReceivedBlob(OrbSdkClientType type, const std::vector<uint8_t>& blob,
                          const Stopped* stopped = nullptr);
  void notifyServiceUp(OrbSdkClientType type, const Stopped* stopped = nullptr);
  void notifyServiceDown(const Stopped* stopped = nullptr);

 protected:
  void sdkThread(OrbSdkClientType type, std::shared_ptr<SdkClientEvent> event);
  // Sends the disable message in @p event. False if it was not sent.
  virtual bool sendDisableMessage(SdkClientEvent& event) = 0;
  // The cleanup event of @p type has been handled: one registration less. True when no type is
  // active any more, which ends the worker after its present pass.
  virtual bool deactivateType(OrbSdkClientType type);
  // True if no listener is to be told of a failure to send for @p type.
  virtual bool isBeingDisabled(OrbSdkClientType) { return false; }

  // Shared, because a copy would allocate at moments that must not fail.
  using ListenerRef = std::shared_ptr<const Listener>;
  // What belongs to one client type.
  struct TypeState {
    unsigned registrations = 0;  // the type is active while there are any
    ListenerRef listener;        // null until the type has one
  };
  // Null for an unknown type, and for one without a listener.
  ListenerRef knownListener(OrbSdkClientType type) ORB_REQUIRES(mLock);
  // The same, but a type without a listener gets an empty one.
  ListenerRef listenerOf(OrbSdkClientType type);
  static void call(const ListenerRef& listener, SdkStatus status);

  // Connects if necessary, then sends. False if the blob was not sent. A failure to connect was
  // reported already; it gives true.
  bool connectAndSend(SdkClientEvent& event);
  // After a pass of the loop that could not wait.
  void goOnWithoutWait();

  const std::shared_ptr<WorkerLife> mLife = std::make_shared<WorkerLife>();
  std::atomic<bool> mRunning{false};
  Semaphore mNeverSignalled;  // to pause with

  Mutex mLock;
  std::array<TypeState, kOrbSdkClientTypes> mTypes ORB_GUARDED_BY(mLock);
  const ListenerRef mNoListener = std::make_shared<const Listener>();
};
