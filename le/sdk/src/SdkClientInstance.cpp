// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Life of the SDK client: who joins, who leaves, and what happens when the last one has left.
#include <errno.h>

#include <algorithm>
#include <new>
#include <utility>

#include "DepartureWatch.h"
#include "HardStop.h"
#include "Log.h"
#include "NeverDestroyed.h"
#include "SdkClient.h"
#include "SdkClientEndpoint.h"
#include "SdkLog.h"

namespace {

// Lines bear the names of the client's unit and of the two operations that are spread over
// functions.
constexpr char kUnit[] = "le/sdk/src/SdkClient.cpp";
constexpr char kGetInstance[] = "getInstance";
constexpr char kDestroyInstance[] = "destroyInstance";

// How long a leaving type may go on connecting and sending, then how long a send under way may take
// to its end, then the retirement once the connection is closed, then the end of its threads.
// Together well below half a second.
constexpr std::chrono::milliseconds kPatience(200);
constexpr std::chrono::milliseconds kTurnEnd(30);
constexpr std::chrono::milliseconds kAfterClose(100);
constexpr std::chrono::milliseconds kThreadEnd(50);

// The joint decision of joining and leaving threads. Never destroyed: threads may leave while the
// process exits.
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

void initLogOnce() {
  static std::once_flag once;
  std::call_once(once, [] { Log::getInstance()->init(program_invocation_short_name); });
}

}  // namespace

ProcessId endpointOf(OrbSdkClientType type) {
  switch (static_cast<uint32_t>(type)) {
    case 4:
      return ProcessId::Client101;
    case 5:
      return ProcessId::Client102;
    case 7:
      return ProcessId::Client104;
    case 9:
      return ProcessId::Lce;
    case 10:
      return ProcessId::Lle;
    case 11:
      return ProcessId::Lli;
    default:
      return ProcessId::Other;
  }
}

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
    // No memory is no client; others must not wait for this attempt for ever.
  }
  {
    const LockGuard lock(state().lock);
    state().creating = false;
    state().mInstance = instance;
  }
  state().created.notify_all();
  if (!instance) return nullptr;
  SDK_LOG_AS(kSdkClientTag, kUnit, kGetInstance, "SdkClient new Instance created");
  instance->addListener(type);
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
  instance->addListener(type);
  return instance;
}

// Nothing was posted for this user of @p type, so no event will retire it.
void SdkClient::cancelJoining(OrbSdkClientType type) {
  std::shared_ptr<SdkClient> former;
  bool last = false;
  {
    const LockGuard lock(state().lock);
    last = SdkClientBase::retireType(type);
    if (last && state().mInstance.get() == this) former.swap(state().mInstance);
  }
  if (!last) return;
  mEventManager->wake();  // the others left meanwhile: the worker has to notice
  SDK_LOG_AS(kSdkClientTag, kUnit, kDestroyInstance, "cleaning mInstance");
}

void SdkClient::addListener(OrbSdkClientType type) {
  SDK_LOG_AS(kSdkClientTag, kUnit, kGetInstance, "Add listener for type %d",
             static_cast<int>(type));
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
  auto retirement = std::make_shared<SdkClientEvent>(type, std::vector<uint8_t>(), true);
  retirement->silent = true;
  const auto departure = std::make_shared<SdkDeparture>(std::move(retirement));
  instance->beginDeparture(departure);
  instance.reset();
  finishDeparture(*departure);
}

void SdkClient::beginDeparture(const std::shared_ptr<SdkDeparture>& departure) {
  departure->mClient = std::static_pointer_cast<SdkClient>(shared_from_this());
  departure->mPlace.front() = departure;
  {
    const LockGuard lock(mLock);
    mDepartures.splice(mDepartures.end(), departure->mPlace);
    const auto found = mOrbIpcSession.find(endpointOf(departure->mType));
    if (found != mOrbIpcSession.end() && found->second) {
      found->second->mute();
      found->second->stopRetrying();
    }
  }
  post(std::move(departure->mPosting));
}

void SdkClient::finishDeparture(SdkDeparture& departure) {
  departure.startPatience(kPatience);
  if (!departure.await(kPatience)) {
    abandonDeparture(departure);
    if (!departure.await(kAfterClose)) return;  // the worker finishes when it gets there
  }
  if (const Session session = departure.session()) session->awaitReceiver(kThreadEnd);
  if (departure.wasLast()) departure.mClient->mLife->awaitEnd(kThreadEnd);
}

void SdkClient::watchDeparture(const std::shared_ptr<SdkDeparture>& departure) {
  departure->startPatience(kPatience);
  DepartureWatch::add(departure);
}

void SdkClient::abandonDeparture(SdkDeparture& departure) {
  departure.startPatience(std::chrono::milliseconds(0));
  SdkClient& client = *departure.mClient;
  client.wakeForUncounted();  // lest the worker does not know of the farewell
  if (const Session session = client.sessionLeavingWith(departure)) {
    if (client.awaitTurnEnd(departure.mType)) sayFarewell(departure, session);
    session->beginClose();
  }
}

// The worker gets no further turn for a type without patience. A turn under way is waited for,
// unless it does not come to its end.
bool SdkClient::awaitTurnEnd(OrbSdkClientType type) {
  UniqueLock lock(mLock);
  return mTurnEnded.wait_for(lock, kTurnEnd,
                             [&]() ORB_REQUIRES(mLock) { return mSending != type; });
}

// Before a connection is closed for a type without patience, which may be as healthy as ever: on
// the thread that has no patience with the worker, or on the worker that comes too late for its
// turn. Whoever comes second waits for the first one, so that nobody closes in between.
void SdkClient::sayFarewell(SdkDeparture& departure, const Session& session) {
  if (departure.mFarewell->silent) return;
  if (!departure.claimFarewell()) {
    departure.awaitFarewell();
    return;
  }
  try {
    SendBlobMessage message(convertSdkTypeToIpc(departure.mType), departure.mFarewell->blob);
    session->sendAtOnce(message);
  } catch (...) {
    // The connection is closed all the same, and nobody waits for this for ever.
  }
  departure.noteFarewellSaid();
}

// The connection of the type as long as it is @p departure's: once the worker has retired that one,
// the type's connection is its successor's.
SdkClient::Session SdkClient::sessionLeavingWith(const SdkDeparture& departure) {
  const LockGuard lock(mLock);
  if (firstDeparture(departure.mType).get() != &departure) return nullptr;
  const auto found = mOrbIpcSession.find(endpointOf(departure.mType));
  return found == mOrbIpcSession.end() ? nullptr : found->second;
}

bool SdkClient::isLeaving(OrbSdkClientType type) {
  const LockGuard lock(mLock);
  return firstDeparture(type) != nullptr;
}

std::shared_ptr<SdkDeparture> SdkClient::firstDeparture(OrbSdkClientType type) const {
  for (const auto& departure : mDepartures) {
    if (departure->mType == type) return departure;
  }
  return nullptr;
}

std::shared_ptr<SdkDeparture> SdkClient::takeFirstDeparture(OrbSdkClientType type) {
  const auto found = std::find_if(mDepartures.begin(), mDepartures.end(),
                                  [type](const auto& each) { return each->mType == type; });
  if (found == mDepartures.end()) return nullptr;
  auto departure = std::move(*found);
  mDepartures.erase(found);
  return departure;
}

// On the worker, after the farewell of @p type. Ends the connection and, with the last type, makes
// room for a new instance before anybody can join this one.
bool SdkClient::retireType(OrbSdkClientType type) {
  Session session;
  std::shared_ptr<SdkDeparture> departure;
  std::shared_ptr<SdkClient> former;
  bool last = false;
  {
    const LockGuard instanceLock(state().lock);
    last = SdkClientBase::retireType(type);
    if (last && state().mInstance.get() == this) former.swap(state().mInstance);
    const LockGuard lock(mLock);
    const auto found = mOrbIpcSession.find(endpointOf(type));
    if (found != mOrbIpcSession.end()) {
      session.swap(found->second);
      mOrbIpcSession.erase(found);
    }
    departure = takeFirstDeparture(type);
  }
  if (session && departure) sayFarewell(*departure, session);
  if (session) session->beginClose();
  // The lines of the session's end come first; nobody else needs this thread any more.
  if (session && last) session->awaitReceiver(kThreadEnd);
  if (last) SDK_LOG_AS(kSdkClientTag, kUnit, kDestroyInstance, "cleaning mInstance");
  if (departure) departure->complete(std::move(session), last);
  return last;
}
