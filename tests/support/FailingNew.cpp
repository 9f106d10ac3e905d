// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "FailingNew.h"

#include <dlfcn.h>
#include <pthread.h>

#include <atomic>
#include <cstring>
#include <mutex>

#include "AllocationHook.h"
#include "RecordingPlatform.h"

namespace memory {
namespace {

struct Plan {
  bool armed = false;
  bool all = false;
  bool failed = false;
  Caller caller = Caller::Anybody;
  size_t left = 0;

  bool isDue() {
    if (!armed || (!all && left-- != 0)) return false;
    failed = true;
    armed = all;
    return true;
  }
};

constexpr size_t kNameSize = 16;

thread_local Plan tPlan;

std::atomic<bool> sNamedArmed{false};
std::mutex sMutex;  // guards the two variables below
Plan sNamedPlan;
char sThread[kNameSize] = "";

bool matches(Caller wanted, const void* place) {
  if (wanted == Caller::Anybody) return true;
  Dl_info info = {};
  return dladdr(place, &info) != 0 && info.dli_fname != nullptr &&
         strstr(info.dli_fname, "libOrbSdlSdk") != nullptr;
}

bool failsByName(const void* place) {
  char name[kNameSize] = "";
  pthread_getname_np(pthread_self(), name, sizeof(name));
  const bool ofLibrary = matches(Caller::Library, place);
  const std::lock_guard<std::mutex> lock(sMutex);
  if (strcmp(name, sThread) != 0) return false;
  return (ofLibrary || sNamedPlan.caller == Caller::Anybody) && sNamedPlan.isDue();
}

bool fails(const void* place) {
  if (recording::isWorking()) return false;
  if (tPlan.armed && matches(tPlan.caller, place) && tPlan.isDue()) return true;
  return sNamedArmed.load(std::memory_order_relaxed) && failsByName(place);
}

}  // namespace

FailingNew::FailingNew(size_t nth, Caller caller, const char* thread) : mNamed(thread != nullptr) {
  Plan plan;
  plan.armed = true;
  plan.caller = caller;
  plan.left = nth;
  if (!mNamed) {
    tPlan = plan;
    return;
  }
  const std::lock_guard<std::mutex> lock(sMutex);
  sNamedPlan = plan;
  strncpy(sThread, thread, kNameSize - 1);
  sNamedArmed = true;
}

FailingNew::~FailingNew() {
  if (!mNamed) {
    tPlan = Plan();
    return;
  }
  const std::lock_guard<std::mutex> lock(sMutex);
  sNamedPlan = Plan();
  sNamedArmed = false;
}

bool FailingNew::failed() const {
  if (!mNamed) return tPlan.failed;
  const std::lock_guard<std::mutex> lock(sMutex);
  return sNamedPlan.failed;
}

NoMemory::NoMemory() { tPlan.armed = tPlan.all = true; }

NoMemory::~NoMemory() { tPlan = Plan(); }

bool mayAllocate(size_t, const void* caller) { return !fails(caller); }

}  // namespace memory
