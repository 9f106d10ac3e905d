// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "OrbTimer.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <new>

#include "PlatformLog.h"

namespace {

constexpr long kNanosPerSecond = 1000000000;
constexpr long kNanosPerMilli = 1000000;
constexpr long kMillisPerSecond = 1000;
constexpr int kFirstTimerId = 1;
constexpr int kNoTimerId = INT_MAX;  // never handed out

constexpr int kCallbackDone = -1;
constexpr int kCallbackSamePeriod = 0;

// Of the numbers that stand for times. Nanoseconds take the lower 31 bits, and may be negative.
constexpr int64_t kHalfSecond = int64_t{1} << 30;
constexpr int64_t kSecond = 2 * kHalfSecond;
constexpr int64_t kFarSeconds = int64_t{1} << 31;
constexpr int64_t kFar = kFarSeconds * kSecond;

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
  if (mMonitor != nullptr && isFirst(event)) mMonitor->onNextTimerChanged();
  return event.id;
}

void OrbTimer::removeTimedCallback(int id) {
  if (mQueued == 0) return;
  try {
    mRemovedIds.insert(id);
  } catch (const std::bad_alloc&) {
    keep([id](const Entry& entry) { return entry.id != id; });
  }
  if (2 * mRemovedIds.size() > mQueued) dropAllRemoved();
  dropFirstRemoved();
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
  if (mQueued == 0) return -1;
  timespec current{};
  if (now(current) != 0) {
    PLATFORM_LOG(ERROR, "timeUntilNextCallback failed; clock_gettime(): %s", strerror(errno));
    return -1;
  }
  timespec left{};
  if (!subTimeSpec(timeOf(mQueue.front().due), current, left)) {
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
  const auto queued = std::count_if(mQueue.data(), mQueue.data() + mQueued,
                                    [this](const Entry& entry) { return !isRemoved(entry.id); });
  PLATFORM_LOG(DEBUG, "    items queued: %zu", static_cast<size_t>(queued));
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

// A number that orders times as cmpTimeSpec() does. Of those more than 68 years from the clock's
// start only the seconds count.
int64_t OrbTimer::dueNumber(const timespec& when) {
  const int64_t seconds = when.tv_sec;
  if (seconds >= kFarSeconds) return kFar + (seconds - kFarSeconds);
  if (seconds <= -kFarSeconds) return -kFar + (seconds + kFarSeconds);
  return seconds * kSecond + kHalfSecond + when.tv_nsec;
}

timespec OrbTimer::timeOf(int64_t due) {
  if (due >= kFar) return {static_cast<time_t>(due - kFar + kFarSeconds), 0};
  if (due <= -kFar) return {static_cast<time_t>(due + kFar - kFarSeconds), 0};
  const auto sinceFar = static_cast<uint64_t>(due + kFar);
  return {static_cast<time_t>(static_cast<int64_t>(sinceFar / kSecond) - kFarSeconds),
          static_cast<long>(static_cast<int64_t>(sinceFar % kSecond) - kHalfSecond)};
}

// As far as a monitor is concerned: the id does not count.
bool OrbTimer::isFirst(const TimedEvent& event) const {
  const Entry& first = mQueue.front();
  return first.due == dueNumber(event.when) &&
         mActions[first.slot] == Action{event.callback, event.data, event.delay};
}

void OrbTimer::push(const TimedEvent& event) {
  // All that may throw comes first.
  if (mQueued == mQueue.size()) {
    if (mActions.size() == mQueue.size()) mActions.push_back({});
    mQueue.push_back({0, 0, static_cast<uint32_t>(mQueued)});
  }
  // Ids have come round, or a callback has removed its own event, which stays as it was not queued.
  if (isRemoved(event.id)) dropAllRemoved();
  const uint32_t slot = mQueue[mQueued].slot;
  mActions[slot] = {event.callback, event.data, event.delay};
  rise(mQueued++, {dueNumber(event.when), event.id, slot});
}

OrbTimer::TimedEvent OrbTimer::pop() {
  const Entry first = mQueue.front();
  const Action action = mActions[first.slot];
  std::pop_heap(mQueue.data(), mQueue.data() + mQueued);  // the first one's slot is free there
  --mQueued;
  dropFirstRemoved();
  return {first.id, timeOf(first.due), action.callback, action.data, action.delay};
}

// Puts @p entry where it belongs between @p place and the top.
void OrbTimer::rise(size_t place, Entry entry) {
  Entry* const queue = mQueue.data();
  while (place > 0) {
    const size_t parent = (place - 1) / 2;
    if (!(queue[parent] < entry)) break;
    queue[place] = queue[parent];
    place = parent;
  }
  queue[place] = entry;
}

bool OrbTimer::isRemoved(int id) const {
  return !mRemovedIds.empty() && mRemovedIds.count(id) != 0;
}

void OrbTimer::dropFirstRemoved() {
  if (mRemovedIds.empty()) return;
  while (mQueued > 0 && isRemoved(mQueue.front().id)) {
    std::pop_heap(mQueue.data(), mQueue.data() + mQueued);
    --mQueued;
  }
  if (mQueued == 0) mRemovedIds.clear();
}

void OrbTimer::dropAllRemoved() {
  keep([this](const Entry& entry) { return !isRemoved(entry.id); });
  mRemovedIds.clear();
}

// The entries that are not wanted leave the heap; their slots are free behind it.
template <class Wanted>
void OrbTimer::keep(Wanted wanted) {
  Entry* const begin = mQueue.data();
  Entry* const end = std::partition(begin, begin + mQueued, wanted);
  mQueued = static_cast<size_t>(end - begin);
  std::make_heap(begin, end);
}
