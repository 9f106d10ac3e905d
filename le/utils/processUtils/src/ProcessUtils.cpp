// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "ProcessUtils.h"

#include <errno.h>
#include <limits.h>
#include <poll.h>
#include <string.h>
#include <sys/socket.h>

#include <algorithm>
#include <chrono>
#include <new>
#include <utility>

#include "Log.h"
#include "NeverDestroyed.h"
#include "Process.h"
#include "SocketTable.h"
#include "Thread.h"

namespace {

using Globals = ProcessUtilsGlobals;

constexpr char kSendIpc[] = "sendIpc";  // the function of its lines, wherever they are

// Receiver threads run longer than static destruction, so nothing that they use is destroyed: the
// holder's storage stays for good, and at exit it releases the globals only if nothing else holds
// them.
struct GlobalsHolder {
  Mutex lock;
  std::shared_ptr<Globals> globals ORB_GUARDED_BY(lock);
};

GlobalsHolder& holder() {
  static NeverDestroyed<GlobalsHolder> instance;
  return instance.get();
}

// A forked child inherits this together with its parent's locks. Another thread may have held one
// at the fork, and no thread unlocks it in the child. The child has nothing to release.
struct ReleaseAtExit {
  ProcessMark process;

  ReleaseAtExit() { process.set(); }
  ~ReleaseAtExit() {
    if (!process.isHere()) return;
    std::shared_ptr<Globals> last;
    const LockGuard lock(holder().lock);
    last.swap(holder().globals);
    if (last.use_count() > 1) holder().globals = std::move(last);
  }
};

bool startReceiver(Thread& thread, const SharedSocket& socket, HandlerRef handler) {
  // Both are moved out of the thread's function: what is left there must not keep the socket open.
  auto body = [socket = SharedSocket(socket), handler = std::move(handler)]() mutable {
    receiveFrames(std::move(socket), std::move(handler));
  };
  if (!startThread(thread, "orb-receiver", ThreadWork::Callbacks, std::move(body))) {
    return false;
  }
  thread.detach();
  return true;
}

// Whether the socket no longer works: it was shut down, or the peer has closed it. Its receiver may
// still handle earlier data, and then ends.
bool isEnding(const UniqueFd& socket) {
  pollfd state = {socket.get(), POLLRDHUP, 0};
  return poll(&state, 1, 0) > 0;  // hang-ups and errors are reported whatever was asked for
}

}  // namespace

bool registerLocked(ProcessUtilsGlobals& globals, const ProcessUtilsGlobals::Key& key,
                    SharedSocket socket, HandlerRef handler, SharedSocket& displaced) {
  const auto present = globals.mSockets.find(key);
  const bool taken = present != globals.mSockets.end();
  if (taken && !isEnding(*present->second)) {
    ORB_LOGE("id: 0x%lx, sessionId: %d is already registered", key.first,
             static_cast<int>(key.second));
    return false;
  }
  bool started = false;
  try {
    // Entries first: the receiver needs them from its start on, and its handler may answer at once.
    SharedSocket& place = globals.mSockets[key];
    Thread& thread = globals.mReceiverThreads[key];
    socket->setRegistered(true);
    started = startReceiver(thread, socket, std::move(handler));
    if (started) displaced = std::exchange(place, std::move(socket));
  } catch (const std::bad_alloc&) {
    // No memory for the entries: no thread was started.
  }
  if (started) {
    if (displaced) displaced->setRegistered(false);
    return true;
  }
  socket->setRegistered(false);
  if (!taken) {
    globals.mSockets.erase(key);
    globals.mReceiverThreads.erase(key);
  }
  ORB_LOGE("id: 0x%lx, sessionId: %d: no thread to receive on", key.first,
           static_cast<int>(key.second));
  return false;
}

bool registerSocket(unsigned long id, unsigned int sessionId, SharedSocket socket,
                    HandlerRef handler) {
  const auto globals = getProcessUtilsGlobals();
  SharedSocket displaced;
  const ScopedLock<SharedMutex> lock(globals->mLock);
  ORB_LOGD("id: 0x%lx, sessionId: %d, sockFd: %d", id, static_cast<int>(sessionId), socket->get());
  // Stricter than regProcess(): a session's socket is never descriptor 0.
  if (socket->get() <= 0) return false;
  return registerLocked(*globals, {id, sessionId}, std::move(socket), std::move(handler),
                        displaced);
}

ProcessUtilsGlobals::~ProcessUtilsGlobals() { ORB_LOGD("ProcessUtilsGlobals dtor"); }

std::shared_ptr<ProcessUtilsGlobals> getProcessUtilsGlobals() {
  const LockGuard lock(holder().lock);
  static const ReleaseAtExit atExit;
  if (!holder().globals) holder().globals = std::make_shared<Globals>();
  return holder().globals;
}

bool registerSocket(unsigned long id, unsigned int sessionId, SharedSocket socket,
                    const std::shared_ptr<ProcessHandler>& handler,
                    std::shared_ptr<Semaphore> ended) {
  if (!ended) ended = handler->threadSemaphore();
  return registerSocket(id, sessionId, std::move(socket), HandlerRef(handler, std::move(ended)));
}

void deregisterSocket(unsigned long id, unsigned int sessionId, const UniqueFd* only) {
  ORB_LOGD("deregisterSocket: ENTER");
  const auto globals = getProcessUtilsGlobals();
  SharedSocket last;  // a descriptor that ends here is closed after the lock
  const ScopedLock<SharedMutex> lock(globals->mLock);
  const Globals::Key key(id, sessionId);
  const auto found = globals->mSockets.find(key);
  const bool ours =
      found != globals->mSockets.end() && (only == nullptr || found->second.get() == only);
  if (ours) {
    last = std::move(found->second);
    last->setRegistered(false);
    globals->mSockets.erase(found);
  }
  ORB_LOGD("deregister socket debug log");
  if (ours) globals->mReceiverThreads.erase(key);
  ORB_LOGD("deregisterSocket: EXIT");
}

bool sendWhole(const ipcMsg_t& msg, const IpcSocket& socket, int flags) {
  ORB_LOG_AS(ANDROID_LOG_DEBUG, __FILE__, kSendIpc, "send: length: %ld",
             static_cast<long>(msg.payloadLength));
  const size_t size = sizeof(ipcMsg_t) + msg.payloadLength;
  if (::send(socket.get(), &msg, size, sendFlags(flags)) > 0) return true;
  const int error = errno;
  ORB_LOG_AS(ANDROID_LOG_ERROR, __FILE__, kSendIpc, "send: failure, errno: %d(%s)", error,
             strerror(error));
  const bool noRoom = (flags & MSG_DONTWAIT) != 0 && error == EAGAIN;
  // The peer reads no more, but may keep its sending direction open. Without the shutdown, the
  // receiver would never notice.
  if (!noRoom) shutdown(socket.get(), SHUT_RDWR);
  return false;
}

bool awaitRoom(const IpcSocket& socket, std::chrono::steady_clock::time_point end) {
  using std::chrono::milliseconds;
  pollfd state = {socket.get(), POLLOUT, 0};
  int ready = 0;
  do {
    const auto left = std::chrono::ceil<milliseconds>(end - std::chrono::steady_clock::now());
    const auto bounded = std::clamp(left, milliseconds(0), milliseconds(INT_MAX));
    ready = poll(&state, 1, static_cast<int>(bounded.count()));
  } while (ready < 0 && errno == EINTR);
  return ready >= 0 && (state.revents & (POLLERR | POLLHUP)) == 0;
}

int sendFlags(int flags) { return isLibraryThread() ? flags : flags | MSG_NOSIGNAL; }

bool sendIpc(const ipcMsg_t& msg, const IpcSocket& socket, int flags) {
  ORB_LOGD("dstProcessId: 0x%lx, sessionId: %ld", static_cast<unsigned long>(msg.dstProcessId),
           static_cast<long>(msg.sessionId));
  // A socket that has lost its pair is about to end, and the pair may belong to a new one.
  return socket.isRegistered() && sendWhole(msg, socket, flags);
}
