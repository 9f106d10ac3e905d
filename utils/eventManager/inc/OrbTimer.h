// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <time.h>

#include <cstddef>
#include <cstdint>
#include <unordered_set>
#include <vector>

// Told by OrbTimer::addTimedCallback(), on its caller's thread, that the event just added is now
// the first to expire, so that an owner blocked in a wait can shorten it. The library's only timer
// has no monitor.
class IOrbTimerMonitor {
 public:
  virtual ~IOrbTimerMonitor() = default;
  virtual void onNextTimerChanged() = 0;
};

// Queue of timed callbacks, ordered by the time they are due on the boot-time clock (which goes on
// while the system sleeps). It is no thread: the SDK worker calls processEvents() and then waits no
// longer than timeUntilNextEvent(). Owned by the creator of the SDK client; the monitor and the
// callbacks' data belong to their givers and must outlive the timer. No lock: every call must come
// from the thread that runs processEvents(). Events still queued at destruction are dropped
// silently.
//
// What a callback returns decides about its event:
//   -1  done;
//    0  again after the same period;
//   >0  again after that many milliseconds, which becomes the period;
//   any other value is refused with a log line and the period stays.
// The period counts from the end of the callback, so it drifts by the time the callback takes. A
// callback may add and remove timers. Removing its own id does nothing, since its event is not
// queued while it runs: return -1 instead. Events due at the same instant run in no fixed order. An
// event that repeats with period 0 is due again at once and keeps processEvents() from returning.
class OrbTimer {
 public:
  using Callback = int (*)(void* data);

  struct TimedEvent {
    int id;
    timespec when;  // absolute, on CLOCK_BOOTTIME
    Callback callback;
    void* data;
    long delay;  // period in milliseconds
  };

  // The order of the queue, which keeps to it by numbers: true when @p a is due later than @p b, so
  // that the earliest event is on top.
  struct TimedEventCmp {
    bool operator()(const TimedEvent& a, const TimedEvent& b) const {
      return cmpTimeSpec(a.when, b.when) == 1;
    }
  };

  explicit OrbTimer(IOrbTimerMonitor* monitor);  // @p monitor may be null
  virtual ~OrbTimer() = default;
  OrbTimer(const OrbTimer&) = delete;
  OrbTimer& operator=(const OrbTimer&) = delete;

  // Has `callback(data)` called @p delay milliseconds from now; zero or less is due at once.
  // Returns the event's id, or -1 when @p callback is null or the clock cannot be read.
  int addTimedCallback(long delay, Callback callback, void* data);

  // Drops every queued event with this id; an unknown id changes nothing.
  void removeTimedCallback(int id);

  // Runs all that is due. Returns the milliseconds until the next event (never 0), or -1 when the
  // queue is empty or the clock cannot be read.
  int processEvents();

  // Milliseconds until the first event, rounded up so that a wait of that length never ends before
  // the event is due; 0 when due, -1 when the queue is empty or the clock cannot be read. An event
  // beyond the range of int counts as INT_MAX away: the wait ends early and is simply taken up
  // again.
  int timeUntilNextEvent() const;

  void log() const;

  // Ids run from 1 to 0x7FFFFFFE and start over, with no look at what is still queued.
  int getNextTimerId();

  // Advances @p t. Division truncates toward zero and only one second is carried: a negative delay
  // may leave `t.tv_nsec` negative, which the comparison with the present copes with.
  static void addDelayToTimeval(long delay, timespec& t);

  static bool addTimeSpec(const timespec& a, const timespec& b, timespec& result);  // always true
  static bool subTimeSpec(const timespec& a, const timespec& b, timespec& result);  // always true
  static int cmpTimeSpec(const timespec& a, const timespec& b);                     // -1, 0 or 1

  // The processor's virtual counter, raw ticks for measuring durations. Where that register does
  // not exist, nanoseconds of the boot-time clock.
  static uint64_t getQTimerCount();

 protected:
  // Reads the clock like clock_gettime(): 0, or -1 with errno set. The one seam: everything else
  // about time is arithmetic.
  virtual int now(timespec& t) const;

  int mLastId = 0;

 private:
  // What the heap moves about of an event: what decides its place, and where the rest is. The
  // smaller both are, the more of them a cache holds.
  struct Entry {
    int64_t due;  // a number for the time, see dueNumber()
    int id;
    uint32_t slot;  // of mActions

    bool operator<(const Entry& other) const { return due > other.due; }  // the earliest on top
  };
  struct Action {
    Callback callback;
    void* data;
    long delay;

    bool operator==(const Action& other) const {
      return callback == other.callback && data == other.data && delay == other.delay;
    }
  };

  static int64_t dueNumber(const timespec& when);
  static timespec timeOf(int64_t due);
  bool isFirst(const TimedEvent& event) const;
  void push(const TimedEvent& event);
  TimedEvent pop();
  void rise(size_t place, Entry entry);
  bool isRemoved(int id) const;
  void dropFirstRemoved();
  void dropAllRemoved();
  template <class Wanted>
  void keep(Wanted wanted);
  bool reschedule(TimedEvent event, int result);

  // The first mQueued entries are a heap, the others have slots that are free. The entry of an id
  // that was removed stays in the heap until it comes to the top, which is never left so, or until
  // there are more such ids than half of the entries: a removal does not search for it.
  std::vector<Entry> mQueue;
  size_t mQueued = 0;
  std::vector<Action> mActions;         // one for each entry
  std::unordered_set<int> mRemovedIds;  // of no event that is added later
  IOrbTimerMonitor* const mMonitor;
};
