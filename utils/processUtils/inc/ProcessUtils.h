// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>

#include "IpcFrame.h"
#include "IpcSocket.h"
#include "Mutex.h"
#include "ProcessHandler.h"
#include "Thread.h"

// Registered sockets of the process and their receiver threads. One per process, created on first
// use and kept as long as a thread can need it. Any thread. mLock guards all fields; it is always
// locked exclusively, and for look-ups and changes only, never during a send, a receive or a
// callback.
struct ProcessUtilsGlobals {
  using Key = std::pair<unsigned long, unsigned long>;  // peer process id, session id

  ProcessUtilsGlobals() = default;
  ProcessUtilsGlobals(const ProcessUtilsGlobals&) = delete;
  ProcessUtilsGlobals& operator=(const ProcessUtilsGlobals&) = delete;
  ~ProcessUtilsGlobals();

  SharedMutex mLock;
  bool mRegistrationOpen ORB_GUARDED_BY(mLock) = true;
  std::string mProcessName ORB_GUARDED_BY(mLock) = "UNKNOWN";
  uint64_t mProcessId ORB_GUARDED_BY(mLock) = ~uint64_t{0};
  std::map<Key, Thread> mReceiverThreads ORB_GUARDED_BY(mLock);  // every stored thread is detached
  std::map<Key, SharedSocket> mSockets ORB_GUARDED_BY(mLock);
};

std::shared_ptr<ProcessUtilsGlobals> getProcessUtilsGlobals();

// Registers a connected socket under (peer, session) and starts its detached receiver thread. At
// the end the receiver closes the socket (the last holder of the shared socket does) and then
// signals @p ended, or the handler's semaphore if there is no @p ended. If the pair belongs to a
// socket that is shut down or whose peer has closed it, the new socket replaces it: the old
// receiver is about to end and does not need the pair. It refuses, with a log line, a pair whose
// socket still works, and a thread that the system cannot start. It ignores descriptors 0 and
// below.
bool registerSocket(unsigned long id, unsigned int sessionId, SharedSocket socket,
                    const std::shared_ptr<ProcessHandler>& handler,
                    std::shared_ptr<Semaphore> ended = nullptr);

// Removes the pair. Does not shut down or close the socket; its receiver goes on until the socket
// fails. With @p only, removes the pair only if it still belongs to that socket.
void deregisterSocket(unsigned long id, unsigned int sessionId, const UniqueFd* only = nullptr);

// On a receiver thread: the semaphore that it will signal, which identifies the connection. On
// other threads: none.
std::shared_ptr<Semaphore> semaphoreOfThisReceiver();
// True on the receiver thread that will signal @p semaphore: it must not wait for it.
bool isReceiverThreadOf(const Semaphore* semaphore);

// @p flags plus what a send on the calling thread needs: on an application's thread it must not
// raise a signal.
int sendFlags(int flags = 0);

// Sends a complete frame in one call on @p socket, which the caller holds. False if the socket is
// not registered (any more) or the call failed; a short count is a success. May block in send,
// unless @p flags prevent that. After a failure the connection counts as lost: the socket is shut
// down, so that its receiver ends and tells the handler. EAGAIN is no such failure.
bool sendIpc(const ipcMsg_t& msg, const IpcSocket& socket, int flags = 0);
// Waits until most of the buffer of @p socket is free, or @p end has come. False if the socket does
// not work any more.
bool awaitRoom(const IpcSocket& socket, std::chrono::steady_clock::time_point end);

// From here on for programs that take part in the IPC themselves: the sessions of this library use
// none of it.

// Sends on the socket of the frame's (destination, session); false also when there is none.
bool sendIpc(ipcMsg_t* msg, int flags = 0);

struct ProcessUtilsWrapper {
  // Builds the frame in one buffer and sends it as sendIpc() does.
  static bool sendMsg(const unsigned char* data, unsigned long len, unsigned long msgId,
                      long subsystemId, unsigned long srcId, unsigned long dstId,
                      unsigned int sessionId, int flags = 0);
};

// Registers a plain descriptor for a handler that its owner keeps alive until the semaphore is
// signalled. If it succeeds, the receiver owns the descriptor; otherwise the caller keeps it.
bool registerSocket(unsigned long id, unsigned int sessionId, int sockFd, ProcessHandler& handler);

// One-time registration of the process under a name. Descriptor 0 is a valid first socket here.
// Later calls do nothing.
void regProcess(unsigned long id, std::string name, unsigned long sessionId, std::string peerName,
                int sockFd, ProcessHandler& handler);
unsigned long getAssignedProcessId();
std::string getAssignedProcessName();

// Body of a receiver thread; returns when the socket has failed, which it then closes. For a
// handler that its owner keeps alive.
void ipcReceiver(int sockFd, ProcessHandler& handler);
