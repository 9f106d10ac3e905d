// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "EventManager.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "HardStop.h"
#include "OrbTimer.h"
#include "PlatformLog.h"

namespace orb::utils {

namespace {

constexpr int kWaitForever = -1;
constexpr int kInternalFds = 2;  // the wake and the remove descriptor
constexpr int kInternalEvents = EPOLLIN | EPOLLHUP;
constexpr uint32_t kBrokenEvents = EPOLLERR | EPOLLHUP | EPOLLRDHUP;
constexpr size_t kReadChunk = 256;

struct EventName {
  uint32_t flag;
  const char* name;
};

constexpr EventName kEventNames[] = {
    {EPOLLOUT, "EPOLLOUT "}, {EPOLLPRI, "EPOLLPRI "}, {EPOLLERR, "EPOLLERR "},
    {EPOLLHUP, "EPOLLHUP "}, {EPOLLET, "EPOLLET "},
};

int newEventFd() {
  return openAboveStandardStreams([] { return eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC); });
}

// Adds one to an eventfd; returns what write() does.
ssize_t addOne(int eventFd) {
  const uint64_t one = 1;
  return write(eventFd, &one, sizeof(one));
}

}  // namespace

RecursiveMutex::RecursiveMutex() {
  pthread_mutexattr_t attributes;
  pthread_mutexattr_init(&attributes);
  pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutex_init(&mMutex, &attributes);
  pthread_mutexattr_destroy(&attributes);
}

RecursiveMutex::~RecursiveMutex() { pthread_mutex_destroy(&mMutex); }

void RecursiveMutex::lock() { pthread_mutex_lock(&mMutex); }

void RecursiveMutex::unlock() { pthread_mutex_unlock(&mMutex); }

EventManager::EventManager() {
  PLATFORM_LOG(DEBUG, "EventManager: ctor");
  mEpollFd.reset(openAboveStandardStreams([] { return epoll_create1(EPOLL_CLOEXEC); }));
  if (mEpollFd.get() == -1) hardStop("Cannot create epoll instance");
  UniqueFd wakeFd(newEventFd());
  if (wakeFd.get() == -1) hardStop("Cannot create eventfd instance");
  addEventHandler(wakeFd.get(), clearRead, nullptr, nullptr, kInternalEvents);
  UniqueFd removeFd(newEventFd());
  if (removeFd.get() == -1) hardStop("Cannot create removeFd instance");
  addEventHandler(removeFd.get(), processRemove, nullptr, nullptr, kInternalEvents);
  mWakeFd = wakeFd.release();
  mRemoveFd = removeFd.release();
  PLATFORM_LOG(DEBUG, "EventManager is ready. epollFd:%d", mEpollFd.get());
}

EventManager::~EventManager() {
  PLATFORM_LOG(DEBUG, "EventManager: dtor");
  // Queues both for a pass that will not come. The owner closes them, see wakeFd().
  immediatelyRemoveEventHandler(mWakeFd);
  immediatelyRemoveEventHandler(mRemoveFd);
}

bool EventManager::addEventHandler(int fd, EventCallback callback, void* data,
                                   CloseCallback closeCallback, int events) {
  const Lock lock(mMutex);
  PLATFORM_LOG(
      DEBUG, "addEventHandler(int %d, EventCallback %p, void* %p, CloseCallback %p, events %d) EX",
      fd, reinterpret_cast<void*>(callback), data, reinterpret_cast<void*>(closeCallback), events);
  if (mHandlers.count(fd) != 0) {
    PLATFORM_LOG(WARN, "fd=%d is already in handlers", fd);
    return false;
  }
  HandlerObject& handler = record(fd);
  epoll_event event{};
  event.events = static_cast<uint32_t>(events);
  event.data.fd = fd;
  const bool watched = epoll_ctl(mEpollFd.get(), EPOLL_CTL_ADD, fd, &event) == 0;
  if (watched) {
    PLATFORM_LOG(DEBUG, "Added event handler %d", fd);
  } else {
    PLATFORM_LOG(ERROR, "Cannot add event handler. err:%d", errno);
  }
  handler.callback = callback;
  handler.closeCallback = closeCallback;
  handler.data = data;
  handler.watched = watched;
  return true;
}

// Allocates all that a registration and its later removal need, or nothing.
EventManager::HandlerObject& EventManager::record(int fd) {
  HandlerObject handler{};
  handler.removal = newUpdate(fd);
  addApprovedFd(fd);
  try {
    return mHandlers.emplace(fd, std::move(handler)).first->second;
  } catch (...) {
    remApprovedFd(fd);
    throw;
  }
}

EventManager::Updates::node_type EventManager::newUpdate(int fd) {
  Updates one;
  one.emplace(fd, std::make_shared<EventManagerUpdate>());
  return one.extract(fd);
}

bool EventManager::isWatched(int fd) const {
  const Lock lock(mMutex);
  const auto found = mHandlers.find(fd);
  return found != mHandlers.end() && found->second.watched;
}

void EventManager::removeEventHandler(int fd, bool closeFd, CloseFunc closeFunc, void* closeData) {
  Lock lock(mMutex);
  PLATFORM_LOG(DEBUG, "removeEventHandler(int fd: %d) EX", fd);
  if (mHandlers.count(fd) == 0) return;
  HandlerObject handler = takeHandler(fd);
  remApprovedFd(fd);
  queueUpdate(std::move(handler.removal), {fd, closeFd, closeFunc, closeData});
  lock.unlock();
  if (handler.closeCallback != nullptr) handler.closeCallback(fd, handler.data);
}

void EventManager::immediatelyRemoveEventHandler(int fd) {
  Lock lock(mMutex);
  PLATFORM_LOG(DEBUG, "immediatelyRemoveEventHandler(int fd: %d) EX", fd);
  remApprovedFd(fd);
  const auto found = mHandlers.find(fd);
  const bool known = found != mHandlers.end();
  queueUpdate(known ? std::move(found->second.removal) : newUpdate(fd),
              {fd, /*closeFd=*/true, nullptr, nullptr});
  if (!known) return;
  const HandlerObject handler = takeHandler(fd);
  lock.unlock();
  if (handler.closeCallback != nullptr) handler.closeCallback(fd, handler.data);
}

EventManager::HandlerObject EventManager::takeHandler(int fd) {
  HandlerObject handler = std::move(mHandlers.at(fd));
  const size_t erased = mHandlers.erase(fd);
  if (erased != 1) {
    PLATFORM_LOG(ERROR, "handlers.erase for fd %d returned %ld!", fd, static_cast<long>(erased));
  }
  return handler;
}

void EventManager::queueUpdate(Updates::node_type queued, const EventManagerUpdate& update) {
  *queued.mapped() = update;
  mUpdates.erase(update.fd);
  mUpdates.insert(std::move(queued));
  const ssize_t result = addOne(mRemoveFd);
  if (result != static_cast<ssize_t>(sizeof(uint64_t))) {
    PLATFORM_LOG(ERROR, "Error in rem write. rv: %d, error: %s, for fd[%d]",
                 static_cast<int>(result), strerror(errno), mRemoveFd);
  }
}

void EventManager::processEvents(OrbTimer* timer) {
  const int timeout = timer != nullptr ? timer->timeUntilNextEvent() : kWaitForever;
  const int count = epoll_wait(mEpollFd.get(), mEvents.data(), kMaxEvents, timeout);
  mWaitFailed = count == -1 && errno != EINTR;
  if (count == -1) {
    PLATFORM_LOG(ERROR, "epoll_wait error");
    return;
  }
  ++mProcessingDepth;
  if (timer != nullptr) timer->processEvents();
  bool removalDue = false;
  for (int i = 0; i < count; ++i) {
    PLATFORM_LOG(DEBUG, "there are %d file descriptor(s) with events pending", count - i);
    const epoll_event& event = mEvents[static_cast<size_t>(i)];
    if (event.data.fd == mRemoveFd) {
      removalDue = true;  // after the others: the pass may close their descriptors
    } else {
      dispatch(i, event.data.fd, event.events);
    }
  }
  if (removalDue) {
    const Lock lock(mMutex);
    processRemove(mRemoveFd, this);
  }
  --mProcessingDepth;
}

void EventManager::dispatch(int index, int fd, uint32_t events) {
  Lock lock(mMutex);
  if (!isApprovedFd(fd)) {
    PLATFORM_LOG(ERROR, "file descriptor %d is not on the approved list, cannot process event", fd);
    return;
  }
  PLATFORM_LOG(DEBUG, "processing event number: %d, handling %d for %d", index,
               static_cast<int>(events), fd);
  if ((events & kBrokenEvents) != 0) {
    PLATFORM_LOG(ERROR, "file descriptor '%d' sent HUP/ERR.", fd);
  } else if ((events & EPOLLIN) == 0) {
    PLATFORM_LOG(ERROR, "Unhandled epoll event: %s [flags 0%o]. SHOULD NOT HAPPEN",
                 eventNames(events).c_str(), events);
  } else {
    dispatchReadable(fd, std::move(lock));
    return;
  }
  lock.unlock();
  immediatelyRemoveEventHandler(fd);
}

// Unlocks the mutex, which @p lock holds, before it calls a callback.
void EventManager::dispatchReadable(int fd, Lock lock) {
  const auto found = mHandlers.find(fd);
  if (found == mHandlers.end()) {
    PLATFORM_LOG(
        ERROR, "file descriptor '%d' does not have an event handler registered. SHOULD NOT HAPPEN",
        fd);
    lock.unlock();
    immediatelyRemoveEventHandler(fd);
    return;
  }
  const EventCallback callback = found->second.callback;
  void* const data = found->second.data;
  PLATFORM_LOG(DEBUG, "file descriptor '%d' is processing events [callback:%p, data:%p]", fd,
               reinterpret_cast<void*>(callback), data);
  if (callback == nullptr) {
    PLATFORM_LOG(ERROR, "no callback registered fd:%d. SHOULD NOT HAPPEN.", fd);
    lock.unlock();
    immediatelyRemoveEventHandler(fd);
    return;
  }
  lock.unlock();
  callback(fd, data);
}

std::string EventManager::eventNames(uint32_t events) {
  std::string names;
  for (const EventName& event : kEventNames) {
    if ((events & event.flag) != 0) names += event.name;
  }
  return names;
}

void EventManager::processRemove(int fd, void* manager) {
  EventManager& self = *static_cast<EventManager*>(manager);
  PLATFORM_LOG(DEBUG, "processRemove enter");
  for (;;) {
    Lock lock(self.mMutex);
    Updates updates;
    updates.swap(self.mUpdates);
    lock.unlock();
    self.runUpdates(updates);
    lock.lock();
    for (const auto& update : updates) {
      PLATFORM_LOG(DEBUG, "Clearing local update FD:%d", update.first);
      self.mUpdates.erase(update.first);  // if requested again meanwhile: this pass has done it
    }
    if (self.mUpdates.empty()) {
      clearRead(fd, nullptr);
      lock.unlock();
      PLATFORM_LOG(DEBUG, "processRemove exit");
      return;
    }
    PLATFORM_LOG(DEBUG, "updateEpollFd not finished, repeating: %p", manager);
  }
}

void EventManager::runUpdates(const Updates& updates) const {
  for (const auto& [fd, update] : updates) {
    PLATFORM_LOG(DEBUG, "removing %d from epollFd", fd);
    if (epoll_ctl(mEpollFd.get(), EPOLL_CTL_DEL, fd, nullptr) == -1) {
      PLATFORM_LOG(ERROR, "Cannot remove event handler errno %d", errno);
    }
    if (!update->closeFd) continue;
    if (update->closeFunc != nullptr) {
      update->closeFunc(update->closeData);
    } else {
      close(fd);
    }
    PLATFORM_LOG(DEBUG, "Closed %d", fd);
  }
}

void EventManager::clearRead(int fd, void* /*data*/) {
  char chunk[kReadChunk];
  ssize_t result = 0;
  // Ends with 0, too, the end of a stream: an eventfd never gives it, a pipe would do so for ever.
  do {
    result = read(fd, chunk, sizeof(chunk));
  } while (result > 0);
  if (result == -1 && errno != EAGAIN) {
    PLATFORM_LOG(WARN, "Error while clearing the read buffer on fd %d", fd);
  }
}

void EventManager::wake() {
  PLATFORM_LOG(DEBUG, "wake() EX");
  const ssize_t result = addOne(mWakeFd);
  if (result != static_cast<ssize_t>(sizeof(uint64_t))) {
    PLATFORM_LOG(WARN, "Error in writing rv: %ld, error: %s", static_cast<long>(result),
                 strerror(errno));
  }
}

int EventManager::getNumRegisteredFds() {
  const Lock lock(mMutex);
  const int count = static_cast<int>(mApprovedFds.size()) - kInternalFds;
  if (count < 0) {
    PLATFORM_LOG(ERROR, "Invalid approvedFd size %d. Should not happen", count);
  }
  for (const int fd : mApprovedFds) PLATFORM_LOG(DEBUG, "Approved FD: %d", fd);
  return count;
}

void EventManager::addApprovedFd(int fd) { mApprovedFds.insert(fd); }

void EventManager::remApprovedFd(int fd) { mApprovedFds.erase(fd); }

bool EventManager::isApprovedFd(int fd) const { return mApprovedFds.count(fd) != 0; }

void EventManager::lockRecursiveMutex() { mMutex.lock(); }

void EventManager::unlockRecursiveMutex() { mMutex.unlock(); }

}  // namespace orb::utils
