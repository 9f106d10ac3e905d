// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "orbsim/Recorder.h"

#include <optional>

namespace orbsim {

void Recorder::connectionOpened() {
  std::lock_guard<std::mutex> lock(mLock);
  ++mTotals.connections;
  mChanged.notify_all();
}

void Recorder::connectionClosed(uint32_t sessionId, bool wasSession) {
  std::lock_guard<std::mutex> lock(mLock);
  if (!mKeepContents) {
    std::apply([&](auto&... states) { (states.erase(sessionId), ...); }, mStates);
  }
  ++mTotals.connectionsClosed;
  if (wasSession) ++mTotals.sessionsClosed;
  mChanged.notify_all();
}

void Recorder::sessionOpened() {
  std::lock_guard<std::mutex> lock(mLock);
  ++mTotals.sessions;
  mChanged.notify_all();
}

void Recorder::handshakeReply(const Blob& bytes) {
  if (!mKeepContents) return;
  std::lock_guard<std::mutex> lock(mLock);
  mReplies.push_back(bytes);
  mChanged.notify_all();
}

uint64_t Recorder::frame(const Frame& frame) {
  std::lock_guard<std::mutex> lock(mLock);
  ++mTotals.frames;
  if (mKeepContents) mFrames.push_back(frame);
  mUnderWay.insert(mNextFrame);
  mChanged.notify_all();
  return mNextFrame++;
}

void Recorder::dealtWith(uint64_t frame) {
  std::lock_guard<std::mutex> lock(mLock);
  mUnderWay.erase(frame);
  mChanged.notify_all();
}

void Recorder::clear() {
  std::lock_guard<std::mutex> lock(mLock);
  mTotals = Totals{};
  mFrames.clear();
  mReplies.clear();
  mStates = {};
}

Totals Recorder::totals() const {
  std::lock_guard<std::mutex> lock(mLock);
  return mTotals;
}

std::vector<Frame> Recorder::frames() const {
  std::lock_guard<std::mutex> lock(mLock);
  return mFrames;
}

std::vector<Blob> Recorder::handshakeReplies() const {
  std::lock_guard<std::mutex> lock(mLock);
  return mReplies;
}

bool Recorder::waitForTotals(const std::function<bool(const Totals&)>& condition,
                             Timeout timeout) const {
  return waitUntil(timeout, [&] { return condition(mTotals); });
}

bool Recorder::waitForFrame(const std::function<bool(const Frame&)>& wanted, Frame* found,
                            Timeout timeout, Until until) const {
  size_t looked =
      0;  // frames are only appended, so a frame that did not match is not checked again
  std::optional<uint64_t> came;
  return waitUntil(timeout, [&] {
    if (looked > mFrames.size()) looked = 0;  // cleared in the meantime
    for (; !came && looked < mFrames.size(); ++looked) {
      if (!wanted(mFrames[looked])) continue;
      if (found != nullptr) *found = mFrames[looked];
      came = mNextFrame - mFrames.size() + looked;
    }
    return came && (until == Until::kRecorded || mUnderWay.count(*came) == 0);
  });
}

}  // namespace orbsim
