// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "DepartureWatch.h"

#include "NeverDestroyed.h"
#include "SdkClient.h"
#include "Thread.h"

DepartureWatch::State& DepartureWatch::state() {
  static NeverDestroyed<State> instance;
  return instance.get();
}

void DepartureWatch::add(const std::shared_ptr<SdkDeparture>& departure) {
  departure->mWatchPlace.front() = departure;
  {
    const LockGuard lock(state().lock);
    state().queue.splice(state().queue.end(), departure->mWatchPlace);
    if (state().running) return;
    state().running = true;
  }
  Thread closer;
  if (startThread(closer, "orb-closer", ThreadWork::Library, watch)) {
    closer.detach();
  } else {
    abandonAll();
  }
}

std::shared_ptr<SdkDeparture> DepartureWatch::next() {
  SdkDeparture::Place first;  // freed after the lock
  const LockGuard lock(state().lock);
  if (state().queue.empty()) {
    state().running = false;
    return nullptr;
  }
  first.splice(first.end(), state().queue, state().queue.begin());
  return first.front();
}

void DepartureWatch::watch() {
  while (const auto departure = next()) {
    if (!departure->awaitPatience()) SdkClient::abandonDeparture(*departure);
  }
}

// What others have added meanwhile counts on the thread that was not to be had.
void DepartureWatch::abandonAll() {
  while (const auto departure = next()) SdkClient::abandonDeparture(*departure);
}
