// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <orb/sdl.h>

#include <chrono>
#include <functional>
#include <utility>

#include "Recorder.h"

// An application of LCE with plain C callbacks. Each call of them is recorded.
namespace application {

struct Event {
  enum Kind { Status, StatusV2, Report, Criteria } kind;
  int value;
};

// The recorder, with waits for kinds of callbacks.
class State : public Recorder<Event> {
 public:
  static State& get() {
    static State* const state = new State;
    return *state;
  }
  // Runs @p action inside the next callback of this kind.
  void inNext(Event::Kind kind, std::function<void()> action) {
    Recorder::inNext([kind](const Event& event) { return event.kind == kind; }, std::move(action));
  }
  bool waitFor(Event::Kind kind, int value, size_t times = 1) {
    return Recorder::waitFor(
        [=](const Event& event) { return event.kind == kind && event.value == value; }, times);
  }
  bool waitForAny(Event::Kind kind, size_t times) {
    return Recorder::waitFor([kind](const Event& event) { return event.kind == kind; }, times,
                             std::chrono::minutes(1));
  }
};
inline State& state() { return State::get(); }

inline void onStatus(status_e status) { state().add({Event::Status, status}); }
inline void onStatusV2(status_v2_e status) { state().add({Event::StatusV2, status}); }
inline void onReport(LceEstimationReportStatus status, LceEstimationReport) {
  state().add({Event::Report, status});
}
inline void onCriteria(LceReportingCriteriaStatus status) {
  state().add({Event::Criteria, status});
}

}  // namespace application
