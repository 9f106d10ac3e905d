// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <pthread.h>
#include <sys/epoll.h>

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>

#include "UniqueFd.h"

class OrbTimer;

namespace orb::utils {

using EventCallback = void (*)(int fd, void* data);  // the descriptor is readable
using CloseCallback = void (*)(int fd, void* data);  // the handler has been removed
using CloseFunc = void (*)(void* data);              // called in place of close(fd)

// One removal that waits for the loop thread. Allocated with the registration, so that a removal
// needs no memory; filled when it is queued, constant after that.
struct EventManagerUpdate {
  int fd;
  bool closeFd;  // the pass also closes the descriptor, or calls `closeFunc` to do so
  CloseFunc closeFunc;
  void* closeData;
};

// POSIX recursive mutex for std::lock_guard and std::unique_lock. Any thread; guards what its owner
// says. Recursive because the removal pass runs inside the loop's own hold on it.
class RecursiveMutex {
 public:
  RecursiveMutex();
  ~RecursiveMutex();
  RecursiveMutex(const RecursiveMutex&) = delete;
  RecursiveMutex& operator=(const RecursiveMutex&) = delete;

  void lock();
  void unlock();

 private:
  pthread_mutex_t mMutex;
};

// The readiness loop of an SDK thread: waits on descriptors with epoll, calls the registered
// callback of each one that is readable, and lets due timers run. Created before its loop thread
// starts and destroyed after it has ended, by the SDK client's creator. processEvents() belongs to
// the loop thread; everything else may be called from any thread, callbacks included. One recursive
// mutex guards the members marked below; it is released before a callback is called, with one
// exception: a removal's CloseFunc runs with it held.
//
// Life of a descriptor:
//   registered          has a handler, is approved, is in epoll;
//   removal requested   has no handler and is not approved, so that an event already fetched for it
//                       is refused; still in epoll and still open, an update is queued;
//   removed             by the removal pass on the loop thread: out of epoll, closed if asked for.
// So a descriptor is never closed while the loop may be dispatching it. The pass goes by descriptor
// number: whoever registers a number again before the pass has run gets the new registration taken
// out of epoll, and closed if the removal said so. Keep a descriptor open until its pass has run
// (the kernel then gives its number to nobody else) and do not register it again before that.
//
// A removal requested on another thread does not wait for a callback that is running or about to
// run: what `data` points to must outlive the loop pass in progress.
//
// Logs straight to the platform log, without a tag.
class EventManager {
 public:
  using Updates = std::map<int, std::shared_ptr<EventManagerUpdate>>;

  // One per registered descriptor. `data` is the registrar's and goes to both callbacks.
  struct HandlerObject {
    EventCallback callback;
    CloseCallback closeCallback;
    void* data;
    bool watched;  // epoll has taken the descriptor
    Updates::node_type removal;
  };

  // Ends the process with exit(-1) if the system has no descriptor for it: the owner cannot work
  // without its loop, so there is no failed state.
  EventManager();

  // Drops removals that no pass has done, without closing their descriptors, and leaves wakeFd()
  // and removeFd() open.
  ~EventManager();

  EventManager(const EventManager&) = delete;
  EventManager& operator=(const EventManager&) = delete;

  // Watches @p fd for @p events (epoll flags). False only if @p fd has a handler already, which
  // stays as it is. If epoll refuses the descriptor, a line says so, but it is recorded and the
  // result is true: its later removal, and with that its close, needs the record.
  bool addEventHandler(int fd, EventCallback callback, void* data, CloseCallback closeCallback,
                       int events);
  // Whether a pass of the loop will wake for @p fd: it is added and epoll has not refused it.
  bool isWatched(int fd) const;

  // Requests the removal of @p fd; @p closeFd asks for its close as well, through @p closeFunc if
  // given. Calls the handler's CloseCallback before it returns. No effect for an unknown
  // descriptor. A later request for the same descriptor replaces one that is still pending.
  void removeEventHandler(int fd, bool closeFd, CloseFunc closeFunc, void* closeData);

  // Requests removal and close of @p fd, even if it has no handler. Despite the name the close is
  // left to the loop thread; what happens at once is that @p fd is dispatched no more.
  void immediatelyRemoveEventHandler(int fd);

  // One pass of the loop: waits until a descriptor is ready, the next timer is due or wake() is
  // called, runs due timers, dispatches, then does the removals. @p timer may be null. A wait that
  // fails (also because of a signal) ends the pass at once, without timers; call again.
  void processEvents(OrbTimer* timer);

  // Whether the wait of the latest pass failed for another reason than a signal. It will fail again
  // as quickly, so the owner's loop pauses. Loop thread only.
  bool waitFailed() const { return mWaitFailed; }

  // Makes a waiting processEvents() return.
  void wake();

  // Number of approved descriptors, the manager's own two not counted.
  int getNumRegisteredFds();

  // The caller of these three holds the mutex.
  void addApprovedFd(int fd);
  void remApprovedFd(int fd);
  bool isApprovedFd(int fd) const;

  // For users that need several calls to be one step.
  void lockRecursiveMutex();
  void unlockRecursiveMutex();

  // Reads @p fd, which must be non-blocking, until nothing is left.
  static void clearRead(int fd, void* data);

  // The removal pass; @p fd is removeFd(), @p manager the EventManager. Call it with the mutex
  // held, as the loop does: without it, a removal that replaces another one during the pass would
  // be lost.
  static void processRemove(int fd, void* manager);

  // The destructor leaves these two open on purpose. Their owner reads them before it destroys the
  // manager, and closes them after that.
  int wakeFd() const { return mWakeFd; }
  int removeFd() const { return mRemoveFd; }

  // The names of the flags in @p events other than EPOLLIN that the loop can tell, each followed by
  // one blank.
  static std::string eventNames(uint32_t events);

 private:
  using Lock = std::unique_lock<RecursiveMutex>;

  static constexpr int kMaxEvents = 4;

  void dispatch(int index, int fd, uint32_t events);
  void dispatchReadable(int fd, Lock lock);
  // The mutex is held for all four.
  HandlerObject& record(int fd);
  static Updates::node_type newUpdate(int fd);
  void queueUpdate(Updates::node_type queued, const EventManagerUpdate& update);
  HandlerObject takeHandler(int fd);  // @p fd has a handler
  void runUpdates(const Updates& updates) const;

  mutable RecursiveMutex mMutex;

  // Set by the constructor, constant from then on.
  UniqueFd mEpollFd;
  int mWakeFd = -1;
  int mRemoveFd = -1;

  // Used by the loop thread only.
  int mProcessingDepth = 0;  // 1 while a pass dispatches; nothing reads it but a debugger
  std::array<epoll_event, kMaxEvents> mEvents{};  // result of the latest wait
  bool mWaitFailed = false;

  // Guarded by mMutex.
  std::map<int, HandlerObject> mHandlers;
  Updates mUpdates;            // at most one per descriptor
  std::set<int> mApprovedFds;  // what may be dispatched; holds the manager's own two
};

}  // namespace orb::utils
