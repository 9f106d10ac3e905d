// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "IpcReceiver.h"

#include <errno.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>

#include <algorithm>
#include <memory>

#include "HardStop.h"
#include "Log.h"
#include "ProcessUtils.h"
#include "StreamReader.h"

namespace {

// The names under which the log shows all lines of a receiver.
constexpr char kUnit[] = "le/utils/processUtils/src/ProcessUtils.cpp";
constexpr char kReceiver[] = "ipcReceiver";

thread_local const std::shared_ptr<Semaphore>* tSemaphoreOfThisReceiver = nullptr;

struct FreeMemory {
  void operator()(void* memory) const { free(memory); }
};

// The memory for the frames of one receiver, which holds one frame at a time. Frames of the usual
// length use the same buffer, and a longer frame gets a buffer of its own. Used by the receiver
// thread only; no lock.
class FramePlace {
 public:
  FramePlace() = default;
  FramePlace(const FramePlace&) = delete;
  FramePlace& operator=(const FramePlace&) = delete;

  // Gives room for a frame with this header, and copies the header there. The room is valid until
  // the next call of make() or giveBack().
  ipcMsg_t* make(const ipcMsg_t& header) {
    mLong.reset();
    if (header.payloadLength > kUsualPayload) mLong.reset(allocate(header.payloadLength));
    void* const place = mLong ? mLong.get() : static_cast<void*>(mUsual);
    return static_cast<ipcMsg_t*>(memcpy(place, &header, sizeof(header)));
  }
  // Frees the buffer of a long frame: the receiver must not keep it while it waits for the next
  // frame.
  void giveBack() { mLong.reset(); }

 private:
  static constexpr size_t kUsualPayload = 976;

  // The length comes from the peer and is trusted: a frame for which there is no memory ends the
  // process. calloc() gives zeroed pages, which cost nothing until bytes arrive in them.
  static void* allocate(uint64_t payloadLength) {
    const uint64_t room = SIZE_MAX - sizeof(ipcMsg_t);
    void* const memory = payloadLength <= room
                             ? calloc(1, static_cast<size_t>(payloadLength) + sizeof(ipcMsg_t))
                             : nullptr;
    if (memory == nullptr) hardStop("malloc failed");
    return memory;
  }

  alignas(ipcMsg_t) unsigned char mUsual[sizeof(ipcMsg_t) + kUsualPayload];  // left unset
  std::unique_ptr<void, FreeMemory> mLong;
};

// Reads the payload of @p frame, whose header is complete. @p received is what the log shows as the
// length. False if the socket failed or ended before the whole payload.
bool receivePayload(StreamReader& reader, ipcMsg_t* frame, int& received) {
  received = 0;
  if (frame->payloadLength == 0) return true;
  const ssize_t result = reader.read(frame->payload(), static_cast<size_t>(frame->payloadLength));
  if (result == -1) {
    const int error = errno;
    ORB_LOG_AS(ANDROID_LOG_ERROR, kUnit, kReceiver, "Error 2nd recv: errno: %d(%s)", error,
               strerror(error));
    return false;
  }
  received = static_cast<int>(result);
  if (static_cast<uint64_t>(static_cast<int64_t>(received)) != frame->payloadLength) {
    ORB_LOG_AS(ANDROID_LOG_ERROR, kUnit, kReceiver,
               "Unexpected data received: expected size: %d, received size: %d",
               static_cast<int>(frame->payloadLength), received);
    return false;
  }
  return true;
}

// Reads the frames of one socket. It is large, so it is on the heap: a thread's stack is small.
// Used by the receiver thread only; no lock.
class FrameReceiver {
 public:
  explicit FrameReceiver(int fd) : mReader(fd) {}

  // Reads one frame and hands it to the handler. False if the socket has failed or has ended, or if
  // the handler was destroyed.
  bool receive(const HandlerRef& handlerRef);

 private:
  StreamReader mReader;
  FramePlace mPlace;
};

bool FrameReceiver::receive(const HandlerRef& handlerRef) {
  ipcMsg_t header = {};  // if the peer sends less, the rest is zero
  const ssize_t result = mReader.read(&header, sizeof(header));
  const int error = errno;
  ORB_LOG_AS(ANDROID_LOG_DEBUG, kUnit, kReceiver, "recv: len: %d", static_cast<int>(result));
  if (result <= 0) {
    ORB_LOG_AS(ANDROID_LOG_ERROR, kUnit, kReceiver, "Error 1st recv");
    errno = error;
    return false;
  }
  ORB_LOG_AS(ANDROID_LOG_DEBUG, kUnit, kReceiver, "Received data size: %d",
             static_cast<int>(header.payloadLength));
  ipcMsg_t* const frame = mPlace.make(header);
  int received = 0;
  if (!receivePayload(mReader, frame, received)) return false;
  ORB_LOG_AS(ANDROID_LOG_DEBUG, kUnit, kReceiver, "recv: length: %d", received);
  const auto handler = handlerRef.lock();
  if (handler) handler->handleMsg(frame);
  mPlace.giveBack();
  return handler != nullptr;
}

// Deregisters @p socket and returns its session id. Returns 0 if it is not registered any more: its
// owner has deregistered it, or a new socket with the same id has replaced it.
unsigned int deregister(const SharedSocket& socket) {
  const auto globals = getProcessUtilsGlobals();
  SharedSocket last;  // closed after the lock
  const ScopedLock<SharedMutex> lock(globals->mLock);
  auto& sockets = globals->mSockets;
  const auto found = std::find_if(sockets.begin(), sockets.end(),
                                  [&](const auto& entry) { return entry.second == socket; });
  if (found == sockets.end()) return 0;
  const auto key = found->first;
  const auto sessionId = static_cast<unsigned int>(key.second);
  ORB_LOG_AS(ANDROID_LOG_DEBUG, kUnit, kReceiver, "Cleaning up session %d, socket %d",
             static_cast<int>(sessionId), socket->get());
  last = std::move(found->second);
  last->setRegistered(false);
  sockets.erase(found);
  globals->mReceiverThreads.erase(key);
  return sessionId;
}

void reportException(int fd) {
  ORB_LOG_AS(ANDROID_LOG_ERROR, kUnit, kReceiver, "receiver of socket %d ended by an exception",
             fd);
}

// The last steps of a receiver for its handler.
void endSession(const SharedSocket& socket, const HandlerRef& handlerRef) {
  const unsigned int sessionId = deregister(socket);
  ORB_LOG_AS(ANDROID_LOG_DEBUG, kUnit, kReceiver, "Notifying session %d",
             static_cast<int>(sessionId));
  const auto handler = handlerRef.lock();
  if (!handler) return;
  try {
    if (sessionId != 0) handler->handleSessionEnd(sessionId);
  } catch (...) {
    reportException(socket->get());
  }
  handler->handleReceiverEnd(socket->get());  // also if the call before threw
}

}  // namespace

std::shared_ptr<Semaphore> semaphoreOfThisReceiver() {
  return tSemaphoreOfThisReceiver != nullptr ? *tSemaphoreOfThisReceiver : nullptr;
}

bool isReceiverThreadOf(const Semaphore* semaphore) {
  return semaphore != nullptr && tSemaphoreOfThisReceiver != nullptr &&
         tSemaphoreOfThisReceiver->get() == semaphore;
}

void receiveFrames(SharedSocket socket, HandlerRef handler) {
  const auto semaphore = handler.semaphore();
  tSemaphoreOfThisReceiver = &semaphore;
  const int fd = socket->get();
  // An exception of the handler ends this connection. The thread does its last steps all the same.
  try {
    const auto receiver = std::make_unique<FrameReceiver>(fd);
    while (receiver->receive(handler)) {
    }
    ORB_LOG_AS(ANDROID_LOG_DEBUG, kUnit, kReceiver, "ipc recv error: %d for socket %d", errno, fd);
  } catch (...) {
    reportException(fd);
  }
  try {
    endSession(socket, handler);
  } catch (...) {
    reportException(fd);
  }
  // So the peer sees the end at once, even if a sender still holds the socket.
  shutdown(fd, SHUT_RDWR);
  // Before the signal: a thread that waited for the signal may rely on a closed descriptor.
  socket.reset();
  tSemaphoreOfThisReceiver = nullptr;
  semaphore->increase();
}
