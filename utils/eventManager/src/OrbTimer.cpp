// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "OrbTimer.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>

#include "PlatformLog.h"

namespace {

constexpr long kNanosPerSecond = 1000000000;
constexpr long kNanosPerMilli = 1000000;
constexpr long kMillisPerSecond = 1000;
constexpr int kFirstTimerId = 1;
constexpr int kNoTimerId = INT_MAX;  // never handed out

constexpr int kCallbackDone = -1;
constexpr int kCallbackSamePeriod = 0;

// The same event as far as a monitor is concerned: the id does not count.
bool sameEvent(const OrbTimer::TimedEvent& a, const OrbTimer::TimedEvent& b) {
  return OrbTimer::cmpTimeSpec(a.when, b.when) == 0 && a.callback == b.callback &&
         a.data == b.data && a.delay == b.delay;
}

}  // namespace

OrbTimer::OrbTimer(IOrbTimerMonitor* monitor) : mMonitor(monitor) {}

int OrbTimer::addTimedCallback(long delay, Callback callback, void* data) {
  if (callback == nullptr) {
    PLATFORM_LOG(WARN, "addTimedCallback failed; cannot have NULL callback function");
    return -1;
  }
  timespec when{};
  if (now(when) != 0) {
    PLATFORM_LOG(ERROR, "addTimedCallback failed; clock_gettime(): %s", strerror(errno));
    return -1;
  }
  addDelayToTimeval(delay, when);
  const TimedEvent event{getNextTimerId(), when, callback, data, delay};
  push(event);
  if (mMonitor != nullptr && sameEvent(mQueue.front(), event)) mMonitor->onNextTimerChanged();
  return event.id;
}

void OrbTimer::removeTimedCallback(int id) {
  for (size_t place = 0; place < mQueue.size();) {
    if (mQueue[place].id != id) {
      ++place;
    } else if (mQueue.back().id == id) {
      mQueue.pop_back();
    } else {
      remove(place);  // nothing that has not been looked at comes to stand before this place
    }
  }
}

int OrbTimer::processEvents() {
  for (;;) {
    const int remaining = timeUntilNextEvent();
    if (remaining != 0) return remaining;
    // Off the queue before the call: the callback may change the queue.
    const TimedEvent event = pop();
    const int result = event.callback(event.data);
    if (result != kCallbackDone && !reschedule(event, result)) return -1;
  }
}

// Queues @p event again as its callback's result asks. False when the clock cannot be read: then
// the event is lost, as there is no telling when it would be due.
bool OrbTimer::reschedule(TimedEvent event, int result) {
  if (now(event.when) != 0) {
    PLATFORM_LOG(ERROR, "timeUntilNextCallback failed; clock_gettime(): %s", strerror(errno));
    return false;
  }
  if (result > kCallbackSamePeriod) {
    event.delay = result;
  } else if (result < kCallbackDone) {
    PLATFORM_LOG(WARN, "Invalid delay (%lld), using %lld instead", static_cast<long long>(result),
                 static_cast<long long>(event.delay));
  }
  addDelayToTimeval(event.delay, event.when);
  push(event);
  return true;
}

int OrbTimer::timeUntilNextEvent() const {
  if (mQueue.empty()) return -1;
  timespec current{};
  if (now(current) != 0) {
    PLATFORM_LOG(ERROR, "timeUntilNextCallback failed; clock_gettime(): %s", strerror(errno));
    return -1;
  }
  timespec left{};
  if (!subTimeSpec(mQueue.front().when, current, left)) {
    PLATFORM_LOG(ERROR, "timeUntilNextCallback: subTimeSpec() failed");
    return -1;
  }
  if (left.tv_sec < 0 || (left.tv_sec == 0 && left.tv_nsec < 1)) return 0;
  // A wait that does not fit must not wrap: 0 would fire the event early, -1 would wait for ever.
  if (left.tv_sec > INT_MAX / kMillisPerSecond) return INT_MAX;
  const long long millis = static_cast<long long>(left.tv_sec) * kMillisPerSecond +
                           (left.tv_nsec + kNanosPerMilli - 1) / kNanosPerMilli;
  return static_cast<int>(std::min<long long>(millis, INT_MAX));
}

void OrbTimer::log() const {
  PLATFORM_LOG(DEBUG, "OrbTimer *******************************************");
  PLATFORM_LOG(DEBUG, "    items queued: %zu", mQueue.size());
  PLATFORM_LOG(DEBUG, "    next item in: %dms", timeUntilNextEvent());
}

int OrbTimer::getNextTimerId() {
  const int id = mLastId + 1;
  mLastId = id == kNoTimerId ? kFirstTimerId : id;
  return mLastId;
}

void OrbTimer::addDelayToTimeval(long delay, timespec& t) {
  t.tv_sec += delay / kMillisPerSecond;
  t.tv_nsec += (delay % kMillisPerSecond) * kNanosPerMilli;
  if (t.tv_nsec >= kNanosPerSecond) {
    t.tv_sec += 1;
    t.tv_nsec -= kNanosPerSecond;
  }
}

bool OrbTimer::addTimeSpec(const timespec& a, const timespec& b, timespec& result) {
  result.tv_sec = a.tv_sec + b.tv_sec;
  result.tv_nsec = a.tv_nsec + b.tv_nsec;
  if (result.tv_nsec >= kNanosPerSecond) {
    result.tv_sec += 1;
    result.tv_nsec -= kNanosPerSecond;
  }
  return true;
}

bool OrbTimer::subTimeSpec(const timespec& a, const timespec& b, timespec& result) {
  result.tv_sec = a.tv_sec - b.tv_sec;
  result.tv_nsec = a.tv_nsec - b.tv_nsec;
  if (result.tv_nsec < 0) {
    result.tv_sec -= 1;
    result.tv_nsec += kNanosPerSecond;
  }
  return true;
}

int OrbTimer::cmpTimeSpec(const timespec& a, const timespec& b) {
  if (a.tv_sec != b.tv_sec) return a.tv_sec < b.tv_sec ? -1 : 1;
  if (a.tv_nsec != b.tv_nsec) return a.tv_nsec < b.tv_nsec ? -1 : 1;
  return 0;
}

uint64_t OrbTimer::getQTimerCount() {
#if defined(__aarch64__)
  uint64_t ticks = 0;
  // The barrier keeps the processor from reading it ahead of what is to be measured.
  __asm__ volatile("isb\n\tmrs %0, cntvct_el0" : "=r"(ticks) : : "memory");
  return ticks;
#else
  timespec t{};
  clock_gettime(CLOCK_BOOTTIME, &t);
  return static_cast<uint64_t>(t.tv_sec) * static_cast<uint64_t>(kNanosPerSecond) +
         static_cast<uint64_t>(t.tv_nsec);
#endif
}

int OrbTimer::now(timespec& t) const { return clock_gettime(CLOCK_BOOTTIME, &t); }

void OrbTimer::push(const TimedEvent& event) {
  mQueue.push_back(event);
  std::push_heap(mQueue.begin(), mQueue.end(), TimedEventCmp());
}

OrbTimer::TimedEvent OrbTimer::pop() {
  std::pop_heap(mQueue.begin(), mQueue.end(), TimedEventCmp());
  const TimedEvent event = mQueue.back();
  mQueue.pop_back();
  return event;
}

// The last event, another one, takes the place of the removed one and goes from there to where it
// belongs, down or up.
void OrbTimer::remove(size_t place) {
  const TimedEventCmp isLater;
  const TimedEvent moved = mQueue.back();
  mQueue.pop_back();
  const size_t size = mQueue.size();
  for (size_t child = 2 * place + 1; child < size; child = 2 * place + 1) {
    if (child + 1 < size && isLater(mQueue[child], mQueue[child + 1])) ++child;
    if (!isLater(moved, mQueue[child])) break;
    mQueue[place] = mQueue[child];
    place = child;
  }
  mQueue[place] = moved;
  const auto begin = mQueue.begin();
  std::push_heap(begin, begin + static_cast<std::ptrdiff_t>(place) + 1, isLater);
}
