// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "ProcessUtils.h"

#include <errno.h>
#include <poll.h>
#include <stdint.h>
#include <string.h>
#include <sys/socket.h>

#include <new>
#include <stdexcept>
#include <vector>

#include "IpcReceiver.h"
#include "Log.h"
#include "NeverDestroyed.h"
#include "Process.h"
#include "Thread.h"

namespace {

using Globals = ProcessUtilsGlobals;

// Receiver threads outlive static destruction, so what they reach is never destroyed: the holder's
// storage stays for good, and at exit it lets the globals go only as far as nobody else holds them.
struct GlobalsHolder {
  Mutex lock;
  std::shared_ptr<Globals> globals ORB_GUARDED_BY(lock);
};

GlobalsHolder& holder() {
  static NeverDestroyed<GlobalsHolder> instance;
  return instance.get();
}

// A forked child inherits this with its parent's locks: another thread may have held one at the
// fork, and nobody gives it back there. The child has nothing to release.
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

// Whether nothing more goes out on the socket or comes in: shut down here, or left by its peer. Its
// receiver may still be busy with what came before.
bool isOnItsWayOut(const UniqueFd& socket) {
  pollfd state = {socket.get(), POLLRDHUP, 0};
  return poll(&state, 1, 0) > 0;  // hang-ups and errors are reported whatever was asked for
}

// @p displaced gets the socket that had the pair before, to be let go after the lock.
bool registerLocked(Globals& globals, const Globals::Key& key, SharedSocket socket,
                    HandlerRef handler, SharedSocket& displaced) ORB_REQUIRES(globals.mLock) {
  const auto present = globals.mSockets.find(key);
  const bool taken = present != globals.mSockets.end();
  if (taken && !isOnItsWayOut(*present->second)) {
    ORB_LOGE("id: 0x%lx, sessionId: %d is already registered", key.first,
             static_cast<int>(key.second));
    return false;
  }
  bool started = false;
  try {
    // Places first: from its start on the receiver needs them.
    SharedSocket& place = globals.mSockets[key];
    Thread& thread = globals.mReceiverThreads[key];
    started = startReceiver(thread, socket, std::move(handler));
    if (started) displaced = std::exchange(place, std::move(socket));
  } catch (const std::bad_alloc&) {
    // No place to note it in: no thread has been started.
  }
  if (started) return true;
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

}  // namespace

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

bool registerSocket(unsigned long id, unsigned int sessionId, int sockFd, ProcessHandler& handler) {
  const auto globals = getProcessUtilsGlobals();  // here, as long as nothing owns the descriptor
  const auto socket = std::make_shared<UniqueFd>(sockFd);
  if (registerSocket(id, sessionId, socket, HandlerRef(handler))) return true;
  socket->release();
  return false;
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
    globals->mSockets.erase(found);
  }
  ORB_LOGD("deregister socket debug log");
  if (ours) globals->mReceiverThreads.erase(key);
  ORB_LOGD("deregisterSocket: EXIT");
}

int sendFlags(int flags) { return isLibraryThread() ? flags : flags | MSG_NOSIGNAL; }

bool sendIpc(ipcMsg_t* msg, int flags, const UniqueFd* only) {
  if (msg == nullptr) {
    ORB_LOGE("data null");
    return false;
  }
  ORB_LOGD("dstProcessId: 0x%lx, sessionId: %ld", static_cast<unsigned long>(msg->dstProcessId),
           static_cast<long>(msg->sessionId));
  SharedSocket socket;
  {
    const auto globals = getProcessUtilsGlobals();
    const ScopedLock<SharedMutex> lock(globals->mLock);
    const auto found = globals->mSockets.find({msg->dstProcessId, msg->sessionId});
    if (found == globals->mSockets.end()) return false;
    if (only != nullptr && found->second.get() != only) return false;  // its successor's
    socket = found->second;
  }
  ORB_LOGD("send: length: %ld", static_cast<long>(msg->payloadLength));
  const size_t size = sizeof(ipcMsg_t) + msg->payloadLength;
  if (::send(socket->get(), msg, size, sendFlags(flags)) > 0) return true;
  const int error = errno;
  ORB_LOGE("send: failure, errno: %d(%s)", error, strerror(error));
  const bool noRoom = (flags & MSG_DONTWAIT) != 0 && error == EAGAIN;
  // The peer reads no more, but its end of the other direction may be open: nobody would ever tell.
  if (!noRoom) shutdown(socket->get(), SHUT_RDWR);
  return false;
}

bool ProcessUtilsWrapper::sendMsg(const unsigned char* data, unsigned long len, unsigned long msgId,
                                  long subsystemId, unsigned long srcId, unsigned long dstId,
                                  unsigned int sessionId, int flags, const UniqueFd* only) {
  // Refused here, as each C++ library has a text of its own for it.
  if (len > static_cast<unsigned long>(PTRDIFF_MAX) - sizeof(ipcMsg_t)) {
    throw std::length_error("cannot create std::vector larger than max_size()");
  }
  std::vector<unsigned char> frame(len + sizeof(ipcMsg_t));
  auto* msg = reinterpret_cast<ipcMsg_t*>(frame.data());
  *msg = {srcId, dstId, msgId, subsystemId, sessionId, len};
  if (len != 0) memcpy(msg->payload(), data, len);
  return sendIpc(msg, flags, only);
}

void regProcess(unsigned long id, std::string name, unsigned long sessionId, std::string,
                int sockFd, ProcessHandler& handler) {
  const auto globals = getProcessUtilsGlobals();
  SharedSocket displaced;
  const ScopedLock<SharedMutex> lock(globals->mLock);
  if (!globals->mRegistrationOpen) return;
  const auto socket = std::make_shared<UniqueFd>();
  globals->mRegistrationOpen = false;
  globals->mProcessId = id;
  globals->mProcessName = std::move(name);
  if (sockFd >= 0) {
    socket->reset(sockFd);
    if (registerLocked(*globals, {id, sessionId}, socket, HandlerRef(handler), displaced)) {
      ORB_LOGD("child listening to sock: %d", sockFd);
    } else {
      socket->release();
    }
  }
  ORB_LOGD("registered: %s", globals->mProcessName.c_str());
}

unsigned long getAssignedProcessId() {
  const auto globals = getProcessUtilsGlobals();
  const ScopedLock<SharedMutex> lock(globals->mLock);
  return globals->mProcessId;
}

std::string getAssignedProcessName() {
  const auto globals = getProcessUtilsGlobals();
  const ScopedLock<SharedMutex> lock(globals->mLock);
  return globals->mProcessName;
}
