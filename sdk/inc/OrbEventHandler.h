// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <android/log.h>
#include <errno.h>
#include <string.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cstdint>
#include <deque>
#include <utility>

#include "EventManager.h"
#include "Mutex.h"
#include "OrbTimer.h"

namespace orb::utils {

// A queue whose items wake an event loop: any thread posts, the thread that runs the event
// manager's loop hands each item to handleEvent(). The eventfd counts exactly the items in the
// queue. mQueueLock guards the queue and keeps append and count together; it is free while an item
// is handled. The event manager must outlive the handler, which takes its descriptor out of it at
// the end.
template <class T>
class OrbEventHandler {
 public:
  OrbEventHandler(const char* name, OrbTimer* timer, EventManager* eventManager)
      : mTimer(timer),
        mEventManager(eventManager),
        mEventFd(eventfd(0, EFD_SEMAPHORE | EFD_NONBLOCK | EFD_CLOEXEC)) {
    __android_log_print(ANDROID_LOG_DEBUG, nullptr, "OrbEventHandler ctor");
    mEventManager->addEventHandler(mEventFd, cb, this, nullptr, EPOLLIN);
    __android_log_print(ANDROID_LOG_DEBUG, nullptr,
                        "OrbEventHandler: ctor fd[%d] name[%s] addr[%p]", mEventFd, name,
                        static_cast<void*>(this));
  }
  OrbEventHandler(const OrbEventHandler&) = delete;
  OrbEventHandler& operator=(const OrbEventHandler&) = delete;
  virtual ~OrbEventHandler() {
    __android_log_print(ANDROID_LOG_DEBUG, nullptr, "dtor");
    mEventManager->removeEventHandler(mEventFd, true, nullptr, nullptr);
  }

  virtual void handleEvent(T item) = 0;

  // Without a descriptor that the loop wakes for, nothing posted would ever be handled.
  bool canHandle() const { return mEventFd >= 0 && mEventManager->isWatched(mEventFd); }

  void postEvent(T item) {
    __android_log_print(ANDROID_LOG_DEBUG, nullptr, "OrbEventHandler postEvent start for fd[%d]",
                        mEventFd);
    __android_log_print(ANDROID_LOG_DEBUG, nullptr, "Wakelock evt start %p %p",
                        static_cast<void*>(this), address(item));
    const LockGuard lock(mQueueLock);
    mQueue.push_back(std::move(item));
    const uint64_t one = 1;
    const ssize_t written = write(mEventFd, &one, sizeof(one));
    if (written != static_cast<ssize_t>(sizeof(one))) {
      __android_log_print(ANDROID_LOG_ERROR, nullptr,
                          "Error in writing rv: %d, error: %s, for fd[%d]",
                          static_cast<int>(written), strerror(errno), mEventFd);
    }
  }

 protected:
  OrbTimer* const mTimer;
  EventManager* const mEventManager;

 private:
  // The event loop's callback: one wake-up handles everything posted so far.
  static void cb(int fd, void* data) {
    __android_log_print(ANDROID_LOG_DEBUG, nullptr, "OrbEventHandler cb start");
    auto* self = static_cast<OrbEventHandler*>(data);
    while (self->handleNext(fd)) {
    }
    __android_log_print(ANDROID_LOG_DEBUG, nullptr, "OrbEventHandler cb end");
  }

  bool handleNext(int fd) {
    UniqueLock lock(mQueueLock);
    uint64_t unit = 0;
    if (read(fd, &unit, sizeof(unit)) < 0) {
      const int error = errno;
      lock.unlock();
      if (error != EAGAIN) {
        // The order of the two values is that of the line's consumers, not that of its labels.
        __android_log_print(
            ANDROID_LOG_ERROR, nullptr,
            "CB thread woken, but fd read failed. SHOULD NEVER HAPPEN. fd=%d err=%d", error, fd);
      }
      return false;
    }
    if (mQueue.empty()) {
      lock.unlock();
      __android_log_print(ANDROID_LOG_ERROR, nullptr,
                          "More fd reads than queue events. SHOULD NEVER HAPPEN. fd=%d", fd);
      return false;
    }
    T item = std::move(mQueue.front());
    mQueue.pop_front();
    lock.unlock();
    void* const itemAddress = address(item);
    handleEvent(std::move(item));
    __android_log_print(ANDROID_LOG_DEBUG, nullptr, "Wakelock evt end %p %p",
                        static_cast<void*>(this), itemAddress);
    return true;
  }

  template <class P>
  static auto address(const P& item) -> decltype(static_cast<void*>(item.get())) {
    return static_cast<void*>(item.get());
  }
  static void* address(...) { return nullptr; }

  const int mEventFd;
  Mutex mQueueLock;
  std::deque<T> mQueue ORB_GUARDED_BY(mQueueLock);
};

}  // namespace orb::utils
