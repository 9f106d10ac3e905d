// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "ReentryProbe.h"

namespace torture {

// The event that causes a callback.
enum class Cause {
  Answer,        // the daemon sends something
  Loss,          // the daemon closes the connection
  Refusal,       // the daemon closes a new connection
  SendFailure,   // the connection is lost just before the worker sends
  FailedEnable,  // no descriptors: the failure reports of the functions themselves
  FailedCreate,
  FailedDisable,
  FailedDestroy
};

// One callback, with the thread it must run on.
struct Place {
  std::string name;
  Cause cause;
  Service service;
  Slot slot;
  int value;
  const char* thread;

  friend std::ostream& operator<<(std::ostream& out, const Place& place) {
    return out << place.name;
  }
};

inline std::vector<Place> placesOf(Service service) {
  const std::string name = nameOf(service);
  const Slot v1 = slotOf(kStatus, service);
  const Slot v2 = slotOf(kStatusV2, service);
  const char* const receiver = "orb-receiver";
  const char* const worker = "orb-sdk";
  const char* const caller = "caller";
  return {
      {name + "StatusOnTheReceiver", Cause::Answer, service, v1, STATUS_SUCCESS, receiver},
      {name + "StatusV2OnTheReceiver", Cause::Answer, service, v2, STATUS_V2_SUCCESS, receiver},
      {name + "DownOnTheReceiver", Cause::Loss, service, v1, STATUS_SERVICE_DOWN, receiver},
      {name + "DownV2OnTheReceiver", Cause::Loss, service, v2, STATUS_V2_SERVICE_DOWN, receiver},
      {name + "DownOnTheWorker", Cause::Refusal, service, v1, STATUS_SERVICE_DOWN, worker},
      {name + "DownV2OnTheWorker", Cause::Refusal, service, v2, STATUS_V2_SERVICE_DOWN, worker},
      {name + "SendFailure", Cause::SendFailure, service, v1, STATUS_INTERNAL_ERROR, worker},
      {name + "SendFailureV2", Cause::SendFailure, service, v2, STATUS_V2_INTERNAL_ERROR, worker},
      {name + "FailedEnable", Cause::FailedEnable, service, v1, STATUS_INTERNAL_ERROR, caller},
      {name + "FailedCreate", Cause::FailedCreate, service, v1, STATUS_INTERNAL_ERROR, caller},
      {name + "FailedDisable", Cause::FailedDisable, service, v1, STATUS_INTERNAL_ERROR, caller},
      {name + "FailedDestroy", Cause::FailedDestroy, service, v2, STATUS_V2_INTERNAL_ERROR, caller},
  };
}

// Every kind of callback on every thread that it can run on.
inline std::vector<Place> places() {
  const auto answer = [](const char* name, Service service, Slot slot) {
    return Place{name, Cause::Answer, service, slot, kAnyValue, "orb-receiver"};
  };
  std::vector<Place> all{
      answer("LceCriteria", kLce, kLceCriteriaCb), answer("LceLastReport", kLce, kLceLastCb),
      answer("LceReport", kLce, kLceReportCb),     answer("LleLastReport", kLle, kLleLastCb),
      answer("LleReport", kLle, kLleReportCb),     answer("LliIndication", kLli, kLliInterruptCb)};
  for (const Service service : {kLce, kLle, kLli}) {
    for (const Place& place : placesOf(service)) all.push_back(place);
  }
  return all;
}

}  // namespace torture
