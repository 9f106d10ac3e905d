// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "SdkDisable.h"

#include <algorithm>
#include <utility>

#include "DisableWatch.h"
#include "SdkClient.h"

namespace {

// Limits, in this order: a disabled type may still connect and send (the grace period); a daemon
// that reads slowly may make room, for a send that runs and for the disable message; the worker
// deactivates the type after its session was closed; receiver and worker end, each. Together below
// half a second.
constexpr std::chrono::milliseconds kGracePeriod(200);
constexpr std::chrono::milliseconds kRoom = SdkDisable::kRoom;
constexpr std::chrono::milliseconds kAfterClose(100);
constexpr std::chrono::milliseconds kThreadEnd(50);
static_assert(kGracePeriod + kRoom + kAfterClose + 2 * kThreadEnd <=
              std::chrono::milliseconds(480));

}  // namespace

SdkDisable::SdkDisable(std::shared_ptr<SdkClientEvent> cleanup)
    : mCleanup(std::move(cleanup)),
      mType(mCleanup->type),
      mPosting(SdkClientBase::prepare(mCleanup)) {}

void SdkDisable::begin(const std::shared_ptr<SdkDisable>& disable,
                       std::shared_ptr<SdkClient> client) {
  disable->mClient = std::move(client);
  disable->mPlace.front() = disable;
  disable->mClient->noteDisable(disable->mType, std::move(disable->mPlace));
  disable->mClient->post(std::move(disable->mPosting));
}

void SdkDisable::finish() {
  startGracePeriod(kGracePeriod);
  if (!awaitCompletion(kGracePeriod)) {
    force();
    if (!awaitCompletion(kAfterClose)) return;  // the worker finishes when it gets there
  }
  if (const auto ended = session()) ended->awaitReceiver(kThreadEnd);
  if (wasLast()) mClient->awaitWorkerEnd(kThreadEnd);
}

void SdkDisable::finishLater(const std::shared_ptr<SdkDisable>& disable) {
  disable->startGracePeriod(kGracePeriod);
  DisableWatch::add(disable);
}

void SdkDisable::outside(const std::shared_ptr<AfterCallback>& self) {
  finishLater(std::static_pointer_cast<SdkDisable>(self));
}

void SdkDisable::force(std::chrono::milliseconds room) {
  startGracePeriod(std::chrono::milliseconds(0));
  mClient->wakeForUncounted();  // in case the worker was not woken for the event
  if (const auto closing = mClient->sessionOf(*this)) {
    // The worker sends no further message of the type. Wait for one that it is sending, but not for
    // long.
    const auto end = Clock::now() + room;
    if (mClient->awaitSendEnd(mType, room)) sendMessage(*closing, end);
    closing->beginClose();
  }
}

void SdkDisable::startGracePeriod(std::chrono::milliseconds length) {
  const LockGuard lock(mMutex);
  mGracePeriodEnd = Clock::now() + length;
}

SdkDisable::Clock::time_point SdkDisable::gracePeriodEnd() const {
  const LockGuard lock(mMutex);
  return mGracePeriodEnd;
}

bool SdkDisable::gracePeriodOver() const { return Clock::now() >= gracePeriodEnd(); }

bool SdkDisable::awaitGracePeriod() {
  const auto left = std::max(gracePeriodEnd() - Clock::now(), Clock::duration(0));
  return awaitCompletion(std::chrono::ceil<std::chrono::milliseconds>(left));
}

bool SdkDisable::claimMessage() {
  const LockGuard lock(mMutex);
  if (mMessage != Message::Unclaimed) return false;
  mMessage = Message::Claimed;
  return true;
}

void SdkDisable::noteMessageSent() {
  const LockGuard lock(mMutex);
  mMessage = Message::Sent;
  mMessageTried.notify_all();
}

void SdkDisable::awaitMessage() {
  UniqueLock lock(mMutex);
  mMessageTried.wait(lock, [this]() ORB_REQUIRES(mMutex) { return mMessage != Message::Claimed; });
}

// Called before a session is closed after the grace period; its connection may still work. Runs on
// the thread that forces the disable, or on the worker if it is late. The second one waits for the
// first, so that neither closes the connection during the send.
void SdkDisable::sendMessage(OrbIpcClientSession& session, Clock::time_point roomBy) {
  if (mCleanup->silent) return;
  if (!claimMessage()) {
    awaitMessage();
    return;
  }
  try {
    SendBlobMessage message(convertSdkTypeToIpc(mType), std::move(mCleanup->blob));
    if (!session.sendAtOnce(message) && session.awaitRoom(roomBy)) session.sendAtOnce(message);
  } catch (...) {
    // The caller closes the session anyway, and waiting threads must go on.
  }
  noteMessageSent();
}

void SdkDisable::complete(std::shared_ptr<OrbIpcClientSession> session, bool last) {
  const LockGuard lock(mMutex);
  mSession = std::move(session);
  mLast = last;
  mDone = true;
  mCompleted.notify_all();
}

bool SdkDisable::awaitCompletion(std::chrono::milliseconds timeout) {
  UniqueLock lock(mMutex);
  return mCompleted.wait_for(lock, timeout, [this]() ORB_REQUIRES(mMutex) { return mDone; });
}

std::shared_ptr<OrbIpcClientSession> SdkDisable::session() const {
  const LockGuard lock(mMutex);
  return mSession;
}

bool SdkDisable::wasLast() const {
  const LockGuard lock(mMutex);
  return mLast;
}
