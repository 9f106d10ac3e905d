// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// For programs that take part in the IPC under a name of their own: the name of the process,
// sockets that are registered by their numbers, and frames that are sent by (destination, session).
// The sessions of this library use none of it.
#include <stdint.h>
#include <string.h>

#include <stdexcept>
#include <utility>
#include <vector>

#include "Log.h"
#include "ProcessUtils.h"
#include "SocketTable.h"

namespace {

constexpr char kUnit[] = "le/utils/processUtils/src/ProcessUtils.cpp";  // lines bear its name

}  // namespace

bool sendIpc(ipcMsg_t* msg, int flags) {
  if (msg == nullptr) {
    ORB_LOG_AS(ANDROID_LOG_ERROR, kUnit, "sendIpc", "data null");
    return false;
  }
  ORB_LOG_AS(ANDROID_LOG_DEBUG, kUnit, "sendIpc", "dstProcessId: 0x%lx, sessionId: %ld",
             static_cast<unsigned long>(msg->dstProcessId), static_cast<long>(msg->sessionId));
  SharedSocket socket;
  {
    const auto globals = getProcessUtilsGlobals();
    const ScopedLock<SharedMutex> lock(globals->mLock);
    const auto found = globals->mSockets.find({msg->dstProcessId, msg->sessionId});
    if (found == globals->mSockets.end()) return false;
    socket = found->second;
  }
  return sendWhole(*msg, *socket, flags);
}

bool registerSocket(unsigned long id, unsigned int sessionId, int sockFd, ProcessHandler& handler) {
  const auto globals = getProcessUtilsGlobals();  // here, as long as nothing owns the descriptor
  const auto socket = std::make_shared<IpcSocket>(sockFd);
  if (registerSocket(id, sessionId, socket, HandlerRef(handler))) return true;
  socket->release();
  return false;
}

bool ProcessUtilsWrapper::sendMsg(const unsigned char* data, unsigned long len, unsigned long msgId,
                                  long subsystemId, unsigned long srcId, unsigned long dstId,
                                  unsigned int sessionId, int flags) {
  // Refused here, because each C++ library has another text for it.
  if (len > static_cast<unsigned long>(PTRDIFF_MAX) - sizeof(ipcMsg_t)) {
    throw std::length_error("cannot create std::vector larger than max_size()");
  }
  std::vector<unsigned char> frame(len + sizeof(ipcMsg_t));
  auto* msg = reinterpret_cast<ipcMsg_t*>(frame.data());
  *msg = {srcId, dstId, msgId, subsystemId, sessionId, len};
  if (len != 0) memcpy(msg->payload(), data, len);
  return sendIpc(msg, flags);
}

void regProcess(unsigned long id, std::string name, unsigned long sessionId, std::string,
                int sockFd, ProcessHandler& handler) {
  const auto globals = getProcessUtilsGlobals();
  SharedSocket displaced;
  const ScopedLock<SharedMutex> lock(globals->mLock);
  if (!globals->mRegistrationOpen) return;
  const auto socket = std::make_shared<IpcSocket>();
  globals->mRegistrationOpen = false;
  globals->mProcessId = id;
  globals->mProcessName = std::move(name);
  if (sockFd >= 0) {
    socket->reset(sockFd);
    if (registerLocked(*globals, {id, sessionId}, socket, HandlerRef(handler), displaced)) {
      ORB_LOG_AS(ANDROID_LOG_DEBUG, kUnit, "regProcess", "child listening to sock: %d", sockFd);
    } else {
      socket->release();
    }
  }
  ORB_LOG_AS(ANDROID_LOG_DEBUG, kUnit, "regProcess", "registered: %s",
             globals->mProcessName.c_str());
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

void ipcReceiver(int sockFd, ProcessHandler& handler) {
  receiveFrames(std::make_shared<IpcSocket>(sockFd), HandlerRef(handler));
}
