// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "SdkClientBase.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <new>
#include <utility>

#include "SdkLog.h"
#include "Thread.h"

namespace {

constexpr char kTag[] = "OrbSdk";
constexpr char kHandleEvent[] = "handleEvent";  // the function of its lines, wherever they are

// Log point: a line number that log consumers rely on.
constexpr int kThreadLoopLine = 43;

// Between two looks at the queue while the loop cannot wait.
constexpr std::chrono::milliseconds kWithoutWait(100);

// Made for each call: threads may still report while the statics of the process are destroyed.
std::vector<uint8_t> noBlob() { return {}; }

// For a handler of exceptions: tells of the one that it has caught.
void reportException() {
  try {
    try {
      throw;
    } catch (const std::exception& error) {
      SDK_LOG_AS(kTag, __FILE__, "sdkThread", "sdkThread: %s", escapePercent(error.what()).c_str());
    } catch (...) {
      SDK_LOG_AS(kTag, __FILE__, "sdkThread", "sdkThread: an exception");
    }
  } catch (const std::bad_alloc&) {
    // No line then, but the thread goes on.
  }
}

size_t index(OrbSdkClientType type) {
  return std::min(static_cast<size_t>(type), kOrbSdkClientTypes - 1);
}

}  // namespace

uint64_t SdkClientBase::mTransactionId = 1;
uint32_t SdkClientBase::mTransactionId32 = 1;

SdkClientBase::SdkClientBase(OrbTimer* timer, orb::utils::EventManager* eventManager)
    : OrbEventHandler("SdkClientBase", timer, eventManager), mActiveTypes(kOrbSdkClientTypes) {}

SdkClientBase::~SdkClientBase() = default;

bool SdkClientBase::start(OrbSdkClientType type, std::shared_ptr<SdkClientEvent> event) {
  auto self = weak_from_this().lock();
  Thread worker;
  const auto body = [this, self, life = mLife, type, event]() mutable {
    try {
      sdkThread(type, std::move(event));
    } catch (...) {
      reportException();
    }
    // Whoever waits for the end finds the worker's share of the client given back.
    self.reset();
    life->end();
  };
  if (!startThread(worker, "orb-sdk", ThreadWork::Callbacks, body)) return false;
  worker.detach();
  mLife->awaitBegin();
  return mLife->begun();
}

void SdkClientBase::sdkThread(OrbSdkClientType, std::shared_ptr<SdkClientEvent> event) {
  SDK_LOG(kTag, "sdkThread called");
  mRunning = true;
  if (event) postEvent(std::move(event));
  mLife->begin();
  while (mRunning) {
    SDK_LOG_AT(kTag, kThreadLoopLine, "sdkThread loop");
    try {
      mTimer->processEvents();
      mEventManager->processEvents(mTimer);
      if (mEventManager->waitFailed()) goOnWithoutWait();
    } catch (...) {
      // One event is lost, not the worker with everything that is queued behind it.
      reportException();
    }
  }
  SDK_LOG(kTag, "sdkThread loop END");
}

// The epoll descriptor is unusable, for instance because the application has closed it. Requests
// and farewells are still handled, only later, and the loop does not spin.
void SdkClientBase::goOnWithoutWait() {
  mNeverSignalled.decreaseFor(kWithoutWait);
  handleQueued();
}

void SdkClientBase::handleEvent(std::shared_ptr<SdkClientEvent> event) {
  SDK_LOG(kTag, "handleEvent");
  if (!mRunning) {
    SDK_LOG(kTag, "handleEvent called while thread not running");
    return;
  }
  const OrbSdkClientType type = event->type;
  if (event->inbound) {
    const ListenerRef listener = listenerOf(type);
    if (listener && *listener) {
      SDK_LOG(kTag, "sendClient");
      (*listener)(BlobReceived, event->blob);
      return;
    }
  }
  if (!deliver(*event) && !isLeaving(type)) call(listenerOf(type), SendFailed);
  if (event->cleanup) {
    SDK_LOG(kTag, "cleanup");
    retireType(type);
  }
}

bool SdkClientBase::deliver(const SdkClientEvent& event) {
  try {
    if (!isConnected(event.type) && !event.cleanup) {
      SDK_LOG_AS(kTag, __FILE__, kHandleEvent, "Reconnect client");
      connectOrbSdkClient(event.type);
    }
    return event.silent || !isConnected(event.type) || sendBlobToService(event.type, event.blob);
  } catch (const std::bad_alloc&) {
    return false;
  }
}

bool SdkClientBase::retireType(OrbSdkClientType type) {
  const LockGuard lock(mLock);
  unsigned& registrations = mRegistrations[index(type)];
  if (registrations > 0) --registrations;
  if (registrations == 0) mActiveTypes[index(type)] = false;
  const bool last = std::find(mActiveTypes.begin(), mActiveTypes.end(), true) == mActiveTypes.end();
  if (last) mRunning = false;
  return last;
}

void SdkClientBase::activateType(OrbSdkClientType type) {
  const LockGuard lock(mLock);
  ++mRegistrations[index(type)];
  mActiveTypes[index(type)] = true;
}

bool SdkClientBase::isTypeActive(OrbSdkClientType type) {
  const LockGuard lock(mLock);
  return mActiveTypes[index(type)];
}

void SdkClientBase::setClientListener(OrbSdkClientType type, Listener listener) {
  const size_t number = static_cast<size_t>(type);
  if (number >= kOrbSdkClientTypes) return;
  ListenerRef exchanged = std::make_shared<const Listener>(std::move(listener));
  const LockGuard lock(mLock);
  mListeners[number].swap(exchanged);  // the former one goes after the lock
}

SdkClientBase::ListenerRef SdkClientBase::knownListener(OrbSdkClientType type) {
  const size_t number = static_cast<size_t>(type);
  return number < kOrbSdkClientTypes ? mListeners[number] : nullptr;
}

SdkClientBase::ListenerRef SdkClientBase::listenerOf(OrbSdkClientType type) {
  const size_t number = static_cast<size_t>(type);
  const LockGuard lock(mLock);
  if (number < kOrbSdkClientTypes && !mListeners[number]) mListeners[number] = mNoListener;
  return knownListener(type);
}

void SdkClientBase::notifyReceivedBlob(OrbSdkClientType type, const std::vector<uint8_t>& blob) {
  ListenerRef listener;
  {
    const LockGuard lock(mLock);
    listener = knownListener(type);
  }
  deliverBlob(type, listener, blob);
}

void SdkClientBase::deliverBlob(OrbSdkClientType type, const ListenerRef& listener,
                                const std::vector<uint8_t>& blob) {
  const int typeNumber = static_cast<int>(type);
  if (!listener) {
    __android_log_print(
        ANDROID_LOG_ERROR, nullptr,
        "OrbSdkClientType %d is not registered with this client. Should never occur!", typeNumber);
    return;
  }
  constexpr char kFunction[] = "notifyReceivedBlob";
  if (!*listener) SDK_LOG_AS(kTag, __FILE__, kFunction, "second null");
  SDK_LOG_AS(kTag, __FILE__, kFunction, "Send response RESPONSE %d", typeNumber);
  (*listener)(BlobReceived, blob);
}

void SdkClientBase::notifyServiceUp(OrbSdkClientType type) {
  ListenerRef listener;
  {
    const LockGuard lock(mLock);
    listener = knownListener(type);
  }
  call(listener, ServiceUp);
}

void SdkClientBase::notifyServiceDown() {
  Listeners listeners;
  {
    const LockGuard lock(mLock);
    listeners = mListeners;
  }
  callAll(listeners, ServiceDown);
}

void SdkClientBase::callAll(const Listeners& listeners, SdkStatus status) {
  for (const ListenerRef& listener : listeners) call(listener, status);
}

void SdkClientBase::call(const ListenerRef& listener, SdkStatus status) {
  if (listener && *listener) (*listener)(status, noBlob());
}
