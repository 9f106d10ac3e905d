// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "DisableWatch.h"

#include "NeverDestroyed.h"
#include "Thread.h"

DisableWatch::State& DisableWatch::state() {
  static NeverDestroyed<State> instance;
  return instance.get();
}

void DisableWatch::add(const std::shared_ptr<SdkDisable>& disable) {
  disable->mWatchPlace.front() = disable;
  {
    const LockGuard lock(state().lock);
    state().queue.splice(state().queue.end(), disable->mWatchPlace);
    if (state().running) return;
    state().running = true;
  }
  Thread closer;
  if (startThread(closer, "orb-closer", ThreadWork::Library, watch)) {
    closer.detach();
  } else {
    forceAll();
  }
}

std::shared_ptr<SdkDisable> DisableWatch::next() {
  SdkDisable::Place first;  // freed after the lock
  const LockGuard lock(state().lock);
  if (state().queue.empty()) {
    state().running = false;
    return nullptr;
  }
  first.splice(first.end(), state().queue, state().queue.begin());
  return first.front();
}

void DisableWatch::watch() {
  while (const auto disable = next()) {
    if (!disable->awaitGracePeriod()) disable->force();
  }
}

// Other threads may have added disables meanwhile, which rely on the thread that could not start.
void DisableWatch::forceAll() {
  while (const auto disable = next()) disable->force(std::chrono::milliseconds(0));
}
