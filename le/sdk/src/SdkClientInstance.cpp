// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Life of the SDK client: which types join it, and what happens when the last one is deactivated.
#include <errno.h>

#include <exception>
#include <mutex>
#include <new>
#include <utility>

#include "HardStop.h"
#include "Log.h"
#include "NeverDestroyed.h"
#include "SdkClient.h"
#include "SdkLog.h"

namespace {

// The unit and the function of the log lines, which several functions write.
constexpr char kUnit[] = "le/sdk/src/SdkClient.cpp";
constexpr char kGetInstance[] = "getInstance";
constexpr char kDestroyInstance[] = "destroyInstance";

// How long the worker waits for the receiver of the last type.
constexpr std::chrono::milliseconds kReceiverEnd(50);

// The instance and its lock, the "instance lock": shared by threads that join and by the worker,
// which deactivates types. Never destroyed: both may happen while the process exits.
struct InstanceState {
  Mutex lock;
  Condition created;
  bool creating ORB_GUARDED_BY(lock) = false;
  std::shared_ptr<SdkClient> mInstance ORB_GUARDED_BY(lock);
};

InstanceState& state() {
  static NeverDestroyed<InstanceState> instance;
  return instance.get();
}

void logListenerAdded(OrbSdkClientType type) {
  SDK_LOG_AS(kSdkClientTag, kUnit, kGetInstance, "Add listener for type %d",
             static_cast<int>(type));
}

void initLogOnce() {
  static std::once_flag once;
  std::call_once(once, [] { Log::getInstance()->init(program_invocation_short_name); });
}

}  // namespace

void EventManagerCloser::operator()(orb::utils::EventManager* manager) const {
  const UniqueFd wakeFd(manager->wakeFd());
  const UniqueFd removeFd(manager->removeFd());
  manager->lockRecursiveMutex();
  orb::utils::EventManager::processRemove(removeFd.get(), manager);
  manager->unlockRecursiveMutex();
  delete manager;
}

std::shared_ptr<SdkClient> SdkClient::getInstance(OrbSdkClientType type, Listener listener,
                                                  std::shared_ptr<SdkClientEvent> event) {
  std::shared_ptr<SdkClient> instance;
  {
    UniqueLock lock(state().lock);
    const auto settled = []() ORB_REQUIRES(state().lock) { return !state().creating; };
    if (!awaitUnlessStopped(state().created, lock, settled)) return nullptr;
    instance = state().mInstance;
    if (!instance) {
      state().creating = true;
    } else if (instance->mRunning && event) {
      instance->activateType(type);  // from here on the worker does not end
    }
  }
  if (!instance) return createInstance(type, std::move(listener), std::move(event));
  return joinInstance(instance, type, std::move(listener), std::move(event));
}

std::shared_ptr<SdkClient> SdkClient::startInstance(OrbSdkClientType type, Listener listener,
                                                    std::shared_ptr<SdkClientEvent> event) {
  initLogOnce();
  auto timer = std::make_unique<OrbTimer>(nullptr);
  OwnedEventManager eventManager(new orb::utils::EventManager);
  auto instance = std::make_shared<SdkClient>(std::move(timer), std::move(eventManager));
  instance->activateType(type);
  instance->setClientListener(type, std::move(listener));
  const bool started = instance->canHandle() && instance->start(type, std::move(event));
  return started ? instance : nullptr;
}

std::shared_ptr<SdkClient> SdkClient::createInstance(OrbSdkClientType type, Listener listener,
                                                     std::shared_ptr<SdkClientEvent> event) {
  std::shared_ptr<SdkClient> instance;
  try {
    instance = startInstance(type, std::move(listener), std::move(event));
  } catch (const std::exception&) {
    // Without memory there is no client. Threads that wait for this attempt must go on.
  }
  {
    const LockGuard lock(state().lock);
    state().creating = false;
    state().mInstance = instance;
  }
  state().created.notify_all();
  if (!instance) return nullptr;
  SDK_LOG_AS(kSdkClientTag, kUnit, kGetInstance, "SdkClient new Instance created");
  logListenerAdded(type);
  return instance;
}

std::shared_ptr<SdkClient> SdkClient::joinInstance(const std::shared_ptr<SdkClient>& instance,
                                                   OrbSdkClientType type, Listener listener,
                                                   std::shared_ptr<SdkClientEvent> event) {
  if (!instance->mRunning || !event) {
    SDK_LOG_AS(kSdkClientTag, kUnit, kGetInstance, "Instance and atomic bool miss match.");
    return nullptr;
  }
  SDK_LOG_AS(kSdkClientTag, kUnit, kGetInstance,
             "Instance is available and already running, post event.");
  try {
    auto posting = prepare(std::move(event));
    instance->setClientListener(type, std::move(listener));
    instance->post(std::move(posting));
  } catch (const std::bad_alloc&) {
    instance->cancelJoining(type);
    return nullptr;
  }
  instance->notifyServiceUp(type);
  logListenerAdded(type);
  return instance;
}

// Takes back what getInstance() registered: nothing was posted, so no event would deactivate it.
void SdkClient::cancelJoining(OrbSdkClientType type) {
  std::shared_ptr<SdkClient> former;
  bool last = false;
  {
    const LockGuard lock(state().lock);
    last = SdkClientBase::deactivateType(type);
    if (last && state().mInstance.get() == this) former.swap(state().mInstance);
  }
  if (!last) return;
  mEventManager->wake();  // all others were deactivated meanwhile: the worker has to notice
  SDK_LOG_AS(kSdkClientTag, kUnit, kDestroyInstance, "cleaning mInstance");
}

void SdkClient::destroyInstance(OrbSdkClientType type) {
  std::shared_ptr<SdkClient> instance;
  {
    const LockGuard lock(state().lock);
    instance = state().mInstance;
  }
  if (!instance) {
    SDK_LOG_AS(kSdkClientTag, kUnit, kDestroyInstance, "instance already destroyed");
    return;
  }
  if (!instance->isTypeActive(type)) return;
  auto cleanup = std::make_shared<SdkClientEvent>(type, std::vector<uint8_t>(), true);
  cleanup->silent = true;
  const auto disable = std::make_shared<SdkDisable>(std::move(cleanup));
  SdkDisable::begin(disable, std::move(instance));
  disable->finish();
}

// On the worker, after the cleanup event of @p type. Closes the session for good. With the last
// type it first makes room for a new instance, so that no thread joins this one.
bool SdkClient::deactivateType(OrbSdkClientType type) {
  Session session;
  std::shared_ptr<SdkDisable> disable;
  std::shared_ptr<SdkClient> former;
  bool last = false;
  {
    const LockGuard instanceLock(state().lock);
    last = SdkClientBase::deactivateType(type);
    if (last && state().mInstance.get() == this) former.swap(state().mInstance);
    const LockGuard lock(mLock);
    EndpointState& endpoint = stateOf(type);
    session.swap(endpoint.session);
    const auto oldest = oldestDisable(endpoint, type);
    if (oldest != endpoint.disables.end()) {
      disable = std::move(*oldest);
      endpoint.disables.erase(oldest);
    }
  }
  if (session && disable) disable->sendMessage(*session);
  if (session) session->beginClose();
  // The log lines of the session's end come first. No other type needs this thread any more.
  if (session && last) session->awaitReceiver(kReceiverEnd);
  if (last) SDK_LOG_AS(kSdkClientTag, kUnit, kDestroyInstance, "cleaning mInstance");
  if (disable) disable->complete(std::move(session), last);
  return last;
}
