// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "orbsim/Control.h"

#include <cstdio>
#include <utility>

#include "orbsim/Session.h"
#include "orbsim/World.h"

namespace orbsim {

Control::Control(const Options& options)
    : mOptions(options),
      mRecorder(options.record),
      mWorld(std::make_unique<World>(options.seed, options.model, options.reportInterval)),
      mReportInterval(options.reportInterval.count()) {}

Control::~Control() = default;

void Control::setReportInterval(std::chrono::milliseconds interval) {
  mReportInterval.store(interval.count());
  mWorld->setInterval(interval);
}

void Control::log(const char* format, ...) {
  if (!logs()) return;
  char line[1024];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(line, sizeof(line), format, arguments);
  va_end(arguments);
  mOptions.log(line);
}

SessionHandshake Control::handshake() const {
  std::lock_guard<std::mutex> lock(mLock);
  return mHandshake;
}

void Control::setHandshake(SessionHandshake handshake) {
  std::lock_guard<std::mutex> lock(mLock);
  mHandshake = std::move(handshake);
}

void Control::setHandshakeScript(HandshakeScript script) {
  SessionHandshake handshake;
  if (script) {
    handshake = [script = std::move(script)](Session& session) {
      return script(session.socket(), session.id());
    };
  }
  setHandshake(std::move(handshake));
}

FrameHandler Control::frameHandler() const {
  std::lock_guard<std::mutex> lock(mLock);
  return mFrameHandler;
}

void Control::setFrameHandler(FrameHandler handler) {
  std::lock_guard<std::mutex> lock(mLock);
  mFrameHandler = std::move(handler);
}

void Control::refuse(const Refusal& refusal) {
  std::lock_guard<std::mutex> lock(mLock);
  mRefusals.push_back(refusal);
  mRefuses.store(true);
}

std::optional<Refusal> Control::takeRefusal(const RequestWords& request) {
  std::lock_guard<std::mutex> lock(mLock);
  for (auto refusal = mRefusals.begin(); refusal != mRefusals.end(); ++refusal) {
    if (refusal->sdkType != request.sdkType) continue;
    if (!refusal->request.empty() && refusal->request != request.request) continue;
    Refusal taken = *refusal;
    if (--refusal->times == 0) mRefusals.erase(refusal);
    mRefuses.store(!mRefusals.empty());
    return taken;
  }
  return std::nullopt;
}

bool Control::answers(uint32_t sdkType) const {
  std::lock_guard<std::mutex> lock(mLock);
  return !mAllMuted && mMuted.count(sdkType) == 0;
}

void Control::setAnswers(bool on) {
  std::lock_guard<std::mutex> lock(mLock);
  mAllMuted = !on;
  if (on) mMuted.clear();
}

void Control::setAnswers(uint32_t sdkType, bool on) {
  std::lock_guard<std::mutex> lock(mLock);
  if (on) {
    mMuted.erase(sdkType);
  } else {
    mMuted.insert(sdkType);
  }
}

}  // namespace orbsim
