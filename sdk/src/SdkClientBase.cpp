// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "SdkClientBase.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <new>
#include <utility>

#include "PlatformLog.h"
#include "SdkLog.h"
#include "Thread.h"

namespace {

constexpr char kTag[] = "OrbSdk";
constexpr char kHandleEvent[] = "handleEvent";  // the function of its lines, wherever they are

// Log point: a line number that log consumers rely on.
constexpr int kThreadLoopLine = 43;

// Between two looks at the queue while the loop cannot wait.
constexpr std::chrono::milliseconds kWithoutWait(100);

// Made for each call: threads may still report while static objects are destroyed.
std::vector<uint8_t> noBlob() { return {}; }

// For a catch block: logs the exception that it has caught.
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

bool isSet(const SdkClientBase::Stopped* stopped) { return stopped != nullptr && *stopped; }

}  // namespace

uint64_t SdkClientBase::mTransactionId = 1;
uint32_t SdkClientBase::mTransactionId32 = 1;

SdkClientBase::SdkClientBase(OrbTimer* timer, orb::utils::EventManager* eventManager)
    : OrbEventHandler("SdkClientBase", timer, eventManager) {}

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
    // Release the client first: who waits for the end relies on it.
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
      // Only one event is lost; the worker goes on with those queued after it.
      reportException();
    }
  }
  SDK_LOG(kTag, "sdkThread loop END");
}

// The epoll descriptor is unusable, for instance because the application has closed it. Requests
// and cleanup events are still handled, but later; the pause keeps the loop from spinning.
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
  if (!connectAndSend(*event) && !isBeingDisabled(type)) call(listenerOf(type), SendFailed);
  if (event->cleanup) {
    SDK_LOG(kTag, "cleanup");
    deactivateType(type);
  }
}

bool SdkClientBase::connectAndSend(SdkClientEvent& event) {
  try {
    bool connected = isConnected(event.type);
    if (!connected && !event.cleanup) {
      SDK_LOG_AS(kTag, __FILE__, kHandleEvent, "Reconnect client");
      connectOrbSdkClient(event.type);
      connected = isConnected(event.type);
    }
    if (event.silent || !connected) return true;
    return event.cleanup ? sendDisableMessage(event)
                         : sendBlobToService(event.type, std::move(event.blob));
  } catch (const std::bad_alloc&) {
    return false;
  }
}

bool SdkClientBase::deactivateType(OrbSdkClientType type) {
  const LockGuard lock(mLock);
  unsigned& registrations = mTypes[index(type)].registrations;
  if (registrations > 0) --registrations;
  const bool last = std::none_of(mTypes.begin(), mTypes.end(),
                                 [](const TypeState& each) { return each.registrations > 0; });
  if (last) mRunning = false;
  return last;
}

void SdkClientBase::activateType(OrbSdkClientType type) {
  const LockGuard lock(mLock);
  ++mTypes[index(type)].registrations;
}

bool SdkClientBase::isTypeActive(OrbSdkClientType type) {
  const LockGuard lock(mLock);
  return mTypes[index(type)].registrations > 0;
}

void SdkClientBase::setClientListener(OrbSdkClientType type, Listener listener) {
  const size_t number = static_cast<size_t>(type);
  if (number >= kOrbSdkClientTypes) return;
  ListenerRef exchanged = std::make_shared<const Listener>(std::move(listener));
  const LockGuard lock(mLock);
  mTypes[number].listener.swap(exchanged);  // the former one goes after the lock
}

SdkClientBase::ListenerRef SdkClientBase::knownListener(OrbSdkClientType type) {
  const size_t number = static_cast<size_t>(type);
  return number < kOrbSdkClientTypes ? mTypes[number].listener : nullptr;
}

SdkClientBase::ListenerRef SdkClientBase::listenerOf(OrbSdkClientType type) {
  const size_t number = static_cast<size_t>(type);
  if (number >= kOrbSdkClientTypes) return nullptr;
  const LockGuard lock(mLock);
  ListenerRef& listener = mTypes[number].listener;
  if (!listener) listener = mNoListener;
  return listener;
}

void SdkClientBase::notifyReceivedBlob(OrbSdkClientType type, const std::vector<uint8_t>& blob,
                                       const Stopped* stopped) {
  ListenerRef listener;
  {
    const LockGuard lock(mLock);
    if (isSet(stopped)) return;
    listener = knownListener(type);
  }
  const int typeNumber = static_cast<int>(type);
  if (!listener) {
    PLATFORM_LOG(ERROR,
                 "OrbSdkClientType %d is not registered with this client. Should never occur!",
                 typeNumber);
    return;
  }
  if (!*listener) SDK_LOG(kTag, "second null");
  SDK_LOG(kTag, "Send response RESPONSE %d", typeNumber);
  (*listener)(BlobReceived, blob);
}

void SdkClientBase::notifyServiceUp(OrbSdkClientType type, const Stopped* stopped) {
  ListenerRef listener;
  {
    const LockGuard lock(mLock);
    if (isSet(stopped)) return;
    listener = knownListener(type);
  }
  call(listener, ServiceUp);
}

void SdkClientBase::notifyServiceDown(const Stopped* stopped) {
  std::array<ListenerRef, kOrbSdkClientTypes> listeners;  // in ascending order of types
  {
    const LockGuard lock(mLock);
    if (isSet(stopped)) return;
    std::transform(mTypes.begin(), mTypes.end(), listeners.begin(),
                   [](const TypeState& each) { return each.listener; });
  }
  for (const ListenerRef& listener : listeners) call(listener, ServiceDown);
}

void SdkClientBase::call(const ListenerRef& listener, SdkStatus status) {
  if (listener && *listener) (*listener)(status, noBlob());
}
