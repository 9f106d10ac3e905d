// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <errno.h>
#include <string.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cstdint>
#include <list>
#include <utility>

#include "EventManager.h"
#include "Mutex.h"
#include "OrbTimer.h"
#include "PlatformLog.h"
#include "UniqueFd.h"

namespace orb::utils {

// A queue whose items wake an event loop: any thread posts, the thread that runs the event
// manager's loop hands each item to handleEvent(). The eventfd counts the items in the queue, less
// those whose count could not be written. mQueueLock guards both and keeps append and count
// together; it is free while an item is handled. The event manager must outlive the handler, which
// takes its descriptor out of it at the end.
template <class T>
class OrbEventHandler {
 public:
  // An item with the memory that posting it takes.
  using Posting = std::list<T>;

  OrbEventHandler(const char* name, OrbTimer* timer, EventManager* eventManager)
      : mTimer(timer), mEventManager(eventManager), mEventFd(openAboveStandardStreams([] {
          return eventfd(0, EFD_SEMAPHORE | EFD_NONBLOCK | EFD_CLOEXEC);
        })) {
    UniqueFd ownUntilAdded(mEventFd);  // then the manager closes it
    PLATFORM_LOG(DEBUG, "OrbEventHandler ctor");
    mEventManager->addEventHandler(mEventFd, cb, this, nullptr, EPOLLIN);
    ownUntilAdded.release();
    PLATFORM_LOG(DEBUG, "OrbEventHandler: ctor fd[%d] name[%s] addr[%p]", mEventFd, name,
                 static_cast<void*>(this));
  }
  OrbEventHandler(const OrbEventHandler&) = delete;
  OrbEventHandler& operator=(const OrbEventHandler&) = delete;
  virtual ~OrbEventHandler() {
    PLATFORM_LOG(DEBUG, "dtor");
    mEventManager->removeEventHandler(mEventFd, true, nullptr, nullptr);
  }

  virtual void handleEvent(T item) = 0;

  // Whether the loop wakes for the descriptor. If not, nothing that is posted would be handled.
  bool canHandle() const { return mEventFd >= 0 && mEventManager->isWatched(mEventFd); }

  void postEvent(T item) { post(prepare(std::move(item))); }

  // The two halves of postEvent(). Only the first one needs memory.
  static Posting prepare(T item) {
    Posting posting;
    posting.push_back(std::move(item));
    return posting;
  }
  void post(Posting posting) {
    PLATFORM_LOG(DEBUG, "OrbEventHandler postEvent start for fd[%d]", mEventFd);
    PLATFORM_LOG(DEBUG, "Wakelock evt start %p %p", static_cast<void*>(this),
                 address(posting.front()));
    const LockGuard lock(mQueueLock);
    mQueue.splice(mQueue.end(), posting);
    const ssize_t written = addToCount(1 + mUncounted);
    if (written == static_cast<ssize_t>(sizeof(uint64_t))) {
      mUncounted = 0;
      return;
    }
    ++mUncounted;
    PLATFORM_LOG(ERROR, "Error in writing rv: %d, error: %s, for fd[%d]", static_cast<int>(written),
                 strerror(errno), mEventFd);
  }

  // Handles what is queued; on the loop's thread, if that cannot wait for the descriptor.
  void handleQueued() {
    Posting taken;
    while (takeQueued(taken)) handle(taken);
  }

  // Adds to the count the items whose post could not, which wakes the loop.
  void wakeForUncounted() {
    const LockGuard lock(mQueueLock);
    if (mUncounted > 0 && addToCount(mUncounted) > 0) mUncounted = 0;
  }

 protected:
  OrbTimer* const mTimer;
  EventManager* const mEventManager;

 private:
  // The event loop's callback: one wake-up handles everything posted so far.
  static void cb(int fd, void* data) {
    PLATFORM_LOG(DEBUG, "OrbEventHandler cb start");
    auto* self = static_cast<OrbEventHandler*>(data);
    while (self->handleNext(fd)) {
    }
    PLATFORM_LOG(DEBUG, "OrbEventHandler cb end");
  }

  bool handleNext(int fd) {
    Posting taken;
    const int error = take(fd, taken);
    if (taken.empty()) {
      reportNothingTaken(fd, error);
      return false;
    }
    handle(taken);
    return true;
  }

  void handle(Posting& taken) {
    void* const itemAddress = address(taken.front());
    handleEvent(std::move(taken.front()));
    taken.clear();
    PLATFORM_LOG(DEBUG, "Wakelock evt end %p %p", static_cast<void*>(this), itemAddress);
  }

  bool takeQueued(Posting& taken) {
    const LockGuard lock(mQueueLock);
    if (mQueue.empty()) return false;
    uint64_t unit = 0;
    if (read(mEventFd, &unit, sizeof(unit)) < 0) mUncounted = mQueue.size() - 1;
    taken.splice(taken.end(), mQueue, mQueue.begin());
    return true;
  }

  // Moves the first item to @p taken, if there is one. The result is the descriptor's error, or 0.
  int take(int fd, Posting& taken) {
    const LockGuard lock(mQueueLock);
    uint64_t unit = 0;
    const int error = read(fd, &unit, sizeof(unit)) < 0 ? errno : 0;
    if (error != 0 && error != EAGAIN) return error;
    // The count is 0, so it has none of the items; one of them is taken below.
    if (error == EAGAIN) mUncounted = mQueue.empty() ? 0 : mQueue.size() - 1;
    if (!mQueue.empty()) taken.splice(taken.end(), mQueue, mQueue.begin());
    return error;
  }

  static void reportNothingTaken(int fd, int error) {
    if (error == 0) {
      PLATFORM_LOG(ERROR, "More fd reads than queue events. SHOULD NEVER HAPPEN. fd=%d", fd);
    } else if (error != EAGAIN) {
      // The order of the two values is that of the line's consumers, not that of its labels.
      PLATFORM_LOG(ERROR, "CB thread woken, but fd read failed. SHOULD NEVER HAPPEN. fd=%d err=%d",
                   error, fd);
    }
  }

  // What write() returns.
  ssize_t addToCount(uint64_t items) ORB_REQUIRES(mQueueLock) {
    ssize_t written = 0;
    do {
      written = write(mEventFd, &items, sizeof(items));
    } while (written < 0 && errno == EINTR);
    return written;
  }

  template <class P>
  static auto address(const P& item) -> decltype(static_cast<void*>(item.get())) {
    return static_cast<void*>(item.get());
  }
  static void* address(...) { return nullptr; }

  const int mEventFd;
  Mutex mQueueLock;
  std::list<T> mQueue ORB_GUARDED_BY(mQueueLock);
  uint64_t mUncounted ORB_GUARDED_BY(mQueueLock) = 0;  // items that are not in the count
};

}  // namespace orb::utils
