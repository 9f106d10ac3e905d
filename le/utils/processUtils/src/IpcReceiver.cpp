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

// Lines bear the names of the receiver as a whole.
constexpr char kUnit[] = "le/utils/processUtils/src/ProcessUtils.cpp";
constexpr char kReceiver[] = "ipcReceiver";

thread_local const std::shared_ptr<Semaphore>* tSemaphoreOfThisReceiver = nullptr;

struct FreeMemory {
  void operator()(void* memory) const { free(memory); }
};

// Where the frames of one receiver are put, one after the other: those of the usual length in the
// same place, longer ones each in memory of its own. The receiver thread's alone; no lock.
class FramePlace {
 public:
  FramePlace() = default;
  FramePlace(const FramePlace&) = delete;
  FramePlace& operator=(const FramePlace&) = delete;

  // Room for a frame with this header, which is copied there. It stays until the next call.
  ipcMsg_t* make(const ipcMsg_t& header) {
    mLong.reset();
    if (header.payloadLength > kUsualPayload) mLong.reset(allocate(header.payloadLength));
    void* const place = mLong ? mLong.get() : static_cast<void*>(mUsual);
    return static_cast<ipcMsg_t*>(memcpy(place, &header, sizeof(header)));
  }
  // A long frame's memory is not kept while the receiver waits.
  void giveBack() { mLong.reset(); }

 private:
  static constexpr size_t kUsualPayload = 976;

  // The length comes from the peer and is trusted: a frame that cannot be held ends the process.
  // The zeroed pages cost nothing before bytes arrive in them.
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

// Reads the frames of one socket. On the heap, for the thread's stack is small; the receiver
// thread's alone, no lock.
class FrameReceiver {
 public:
  explicit FrameReceiver(int fd) : mReader(fd) {}

  // One frame; false when the socket has failed or nobody wants its frames any more.
  bool receive(const HandlerRef& handlerRef);

 private:
  StreamReader mReader;
  FramePlace mPlace;
};

bool FrameReceiver::receive(const HandlerRef& handlerRef) {
  ipcMsg_t header = {};  // what a short header leaves out reads as zero
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

// Forgets the registration of @p socket and returns its session id; 0 when the owner or a new
// socket with the same id was quicker.
unsigned int forgetSocket(const SharedSocket& socket) {
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

void endSession(const SharedSocket& socket, const HandlerRef& handlerRef) {
  const unsigned int sessionId = forgetSocket(socket);
  ORB_LOG_AS(ANDROID_LOG_DEBUG, kUnit, kReceiver, "Notifying session %d",
             static_cast<int>(sessionId));
  const auto handler = handlerRef.lock();
  if (!handler) return;
  try {
    if (sessionId != 0) handler->handleSessionEnd(sessionId);
  } catch (...) {
    reportException(socket->get());
  }
  handler->handleReceiverEnd(socket->get());  // the last call always comes
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
  // What a handler throws ends this connection, never the thread without its last steps.
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
  // The peer sees the end even if a sender still holds the socket for a moment.
  shutdown(fd, SHUT_RDWR);
  // Closed before the signal: whoever waited for it finds the descriptor given back.
  socket.reset();
  tSemaphoreOfThisReceiver = nullptr;
  semaphore->increase();
}
