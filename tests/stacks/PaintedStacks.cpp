// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// pthread_create() and pthread_setname_np() are used instead of the C library's functions.
#include "PaintedStacks.h"

#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <vector>

#include "Interposed.h"

namespace {

constexpr unsigned char kPaint = 0xc5;
constexpr size_t kPaintedMost = size_t{512} * 1024;  // in a large stack

struct Place {
  unsigned char* low = nullptr;  // lowest address of the stack
  size_t size = 0;
  unsigned char* first = nullptr;  // where the thread began
  char name[16] = "";
  bool runs = true;
  void* (*body)(void*) = nullptr;
  void* data = nullptr;

  unsigned char* paintedLow() const { return low + size - std::min(size, kPaintedMost); }
  size_t used() const {
    const unsigned char* const end = first;
    const unsigned char* at = paintedLow();
    while (at < end && *static_cast<const volatile unsigned char*>(at) == kPaint) ++at;
    return static_cast<size_t>(end - at);
  }
};

std::mutex& lock() {
  static auto& instance = *new std::mutex;
  return instance;
}
std::vector<Place*>& places() {
  static auto& instance = *new std::vector<Place*>;
  return instance;
}
thread_local Place* tHere = nullptr;

void* run(void* data) {
  auto* const place = static_cast<Place*>(data);
  tHere = place;
  {
    const std::lock_guard<std::mutex> guard(lock());
    place->first = static_cast<unsigned char*>(__builtin_frame_address(0));
    places().push_back(place);
  }
  void* const result = place->body(place->data);
  const std::lock_guard<std::mutex> guard(lock());
  place->runs = false;
  return result;
}

Place* paint(size_t size) {
  const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  size = (size + page - 1) / page * page;
  void* const memory = mmap(nullptr, size + page, PROT_READ | PROT_WRITE,
                            MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_STACK, -1, 0);
  if (memory == MAP_FAILED) std::abort();
  mprotect(memory, page, PROT_NONE);
  auto* const place = new Place;
  place->low = static_cast<unsigned char*>(memory) + page;
  place->size = size;
  std::memset(place->paintedLow(), kPaint,
              static_cast<size_t>(place->low + size - place->paintedLow()));
  return place;
}

}  // namespace

std::map<std::string, painted::Stack> painted::stacks() {
  const std::lock_guard<std::mutex> guard(lock());
  std::map<std::string, Stack> result;
  for (const Place* const place : places()) {
    if (place->name[0] == '\0') continue;
    const auto [stack, isNew] = result.emplace(place->name, Stack{place->size, 0});
    stack->second.size = std::min(stack->second.size, place->size);
    stack->second.used = std::max(stack->second.used, place->used());
  }
  return result;
}

bool painted::anyRuns(const std::string& name) {
  const std::lock_guard<std::mutex> guard(lock());
  return std::any_of(places().begin(), places().end(),
                     [&](const Place* place) { return place->runs && place->name == name; });
}

std::string painted::nameHere() { return tHere != nullptr ? tHere->name : ""; }

size_t painted::leftHere() {
  if (tHere == nullptr) return 0;
  return static_cast<size_t>(static_cast<unsigned char*>(__builtin_frame_address(0)) - tHere->low);
}

extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                              void* (*body)(void*), void* data) {
  pthread_attr_t wanted;
  pthread_attr_init(&wanted);
  size_t size = 0;
  int detached = PTHREAD_CREATE_JOINABLE;
  pthread_attr_getstacksize(attributes != nullptr ? attributes : &wanted, &size);
  if (attributes != nullptr) pthread_attr_getdetachstate(attributes, &detached);
  Place* const place = paint(size);
  place->body = body;
  place->data = data;
  pthread_attr_setdetachstate(&wanted, detached);
  pthread_attr_setstack(&wanted, place->low, place->size);
  const int result = ORB_NEXT(pthread_create)(thread, &wanted, run, place);
  pthread_attr_destroy(&wanted);
  return result;
}

extern "C" int pthread_setname_np(pthread_t thread, const char* name) {
  if (tHere != nullptr && pthread_equal(thread, pthread_self()) != 0) {
    const std::lock_guard<std::mutex> guard(lock());
    std::strncpy(tHere->name, name, sizeof tHere->name - 1);
  }
  return ORB_NEXT(pthread_setname_np)(thread, name);
}
