// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <unordered_map>
#include <vector>

#include "IpcHandler.h"
#include "Mutex.h"
#include "OrbIpcConnection.h"
#include "OrbIpcMessage.h"
#include "ProcessUtils.h"
#include "Thread.h"

// How a message id is received: built from the payload, then handled. Both must be set.
struct IpcMsgConstructorHandlerPair_t {
  std::function<std::shared_ptr<OrbIpcMessage>(std::vector<unsigned char>)> constructor;
  std::function<void(std::shared_ptr<OrbIpcMessage>)> handler;
};

// One connection to the daemon: socket, handshake, receiver, dispatch, sending. Must be owned by a
// shared_ptr. Connecting and sending run on the thread that posts (the SDK worker; a disable
// message also on one that waits for it, while the worker does not send), incoming frames and the
// end of the connection on the receiver thread; awaitRoom(), beginClose(), stopRetrying(),
// awaitReceiver() and cleanup() may come from any thread. mStateLock guards the state of the
// connection and is never held across a system call that blocks, a wait for a thread or a call of a
// handler. The registry and the raw handler are filled before the first connect and constant after
// it.
class OrbIpcSession : public IpcHandler<std::shared_ptr<OrbIpcMessage>>,
                      public std::enable_shared_from_this<OrbIpcSession> {
 public:
  using RawMessageHandler =
      std::function<void(unsigned int, unsigned int, std::vector<unsigned char>)>;

  // With @p ownThread messages are handled on a thread of the session's own, else where they are
  // posted.
  OrbIpcSession(int sockFd, unsigned int sessionId, ProcessId own, ProcessId peer, bool ownThread);
  ~OrbIpcSession() override;

  // Both return false, and post nothing, when the session is not connected.
  bool send(std::shared_ptr<OrbIpcMessage> msg);
  bool send(unsigned int subsystemId, unsigned int msgId, std::vector<unsigned char> payload);

  // Sends on the calling thread, ahead of what others post, and does not wait for room in the
  // socket. The caller makes sure that no other thread sends meanwhile.
  bool sendAtOnce(OrbIpcMessage& msg);
  // Waits until most of the socket's buffer is free, or @p end has come. False if the socket does
  // not work any more, or without one.
  bool awaitRoom(std::chrono::steady_clock::time_point end);

  // An id that is already there keeps its entry.
  void registerForMessages(
      std::unordered_map<unsigned int, IpcMsgConstructorHandlerPair_t> entries);
  void registerForRawMessage(RawMessageHandler handler);

  void handleMsg(ipcMsg_t* frame) override;
  void handleSessionEnd(unsigned int sessionId) override;
  void handleReceiverEnd(int sockFd) override;
  void handleEvent(std::shared_ptr<OrbIpcMessage> msg) override;

  bool isConnected() const { return mConnected; }
  unsigned int sessionId() const { return mSessionId; }

  // Closes the connection, ends a connect in progress and waits until the receiver thread has
  // ended; on that thread itself it does not wait. The session may connect again afterwards, and on
  // another thread even meanwhile: that connection is not touched.
  void cleanup();
  // Closes the connection for good, without waiting: the session never connects again.
  void beginClose();
  // From now on a connect ends with the first attempt that fails, also one that is in progress.
  void stopRetrying();
  // Waits until the receiver of a closed connection has ended. False after the timeout. True at
  // once if there is no receiver, or if the caller is its thread.
  bool awaitReceiver(std::chrono::milliseconds timeout);

 protected:
  virtual void notifyConnectionStatus(bool connected) = 0;
  // Registers the session's socket and starts its receiver; the session is connected then. For
  // subclasses that are built on a descriptor; not before a shared_ptr owns the session. False if
  // there is no socket, if it has its receiver already, or if the registration is refused.
  bool registerReceiverHandler();
  // Deregisters the socket, if it is registered; the receiver goes on until its socket fails.
  void deregisterReceiverHandler();
  // For subclasses with a thread of their own: to be called first in their destructor.
  void stopHandlerThread();

 private:
  using Connection = std::shared_ptr<OrbIpcConnection>;
  enum class Attempt { Connected, Failed, Closed };

  void threadFunc();
  void handleConnectToOrbEvent();
  Connection openConnection(SharedSocket& socket);
  bool beginConnection(Connection connection);
  Attempt connectWithRetries(const Connection& connection, SharedSocket& socket);
  bool connectOnce(int fd);
  Attempt setUpConnection(const Connection& connection, SharedSocket& socket);
  void concludeConnect(const Connection& connection, Attempt result);
  bool waitBeforeRetry(const Connection& connection);
  bool isOpen(const Connection& connection);
  bool performHandshake(int fd, unsigned int& confirmed);
  bool receiveHandshake(int fd, int32_t& type, int32_t& sessionId);
  void answerHandshake(int fd, int32_t sessionId);
  bool startReceiver(const Connection& connection, unsigned int sessionId);
  void deregister(const Connection& connection);
  void handleOrbIpcIncomingRawMessage(const std::shared_ptr<OrbIpcIncomingRawMessage>& msg);
  void handleSendMessage(const std::shared_ptr<OrbIpcMessage>& msg);
  void handleOrbIpcRawMessage(const std::shared_ptr<OrbIpcRawMessage>& msg);
  // Sends on the socket that the session holds. @p frame has the payload behind room for the
  // header.
  bool sendFrame(std::vector<unsigned char> frame, unsigned int msgId, long subsystemId,
                 int flags = 0);
  // @p lastWord: it is the receiver's last call.
  void endConnection(const std::shared_ptr<Semaphore>& receiver, bool lastWord = false);
  Connection closeConnection(bool forGood, std::shared_ptr<Semaphore>& ended);

  // Constant after construction, or before the first connect.
  const ProcessId mOwn;
  const ProcessId mPeer;
  std::unordered_map<unsigned int, IpcMsgConstructorHandlerPair_t> mRegistry;
  RawMessageHandler mRawMessageHandler;
  std::unique_ptr<Thread> mHandlerThread;

  // Written under mStateLock, read without.
  std::atomic<bool> mConnected{false};
  std::atomic<unsigned int> mSessionId;

  Mutex mStateLock;
  Condition mStateChanged;
  Connection mConnection ORB_GUARDED_BY(mStateLock);       // the latest one; empty before the first
  bool mClosedForGood ORB_GUARDED_BY(mStateLock) = false;  // beginClose() came: no connect any more
  bool mStopRetrying ORB_GUARDED_BY(mStateLock) = false;   // a connect ends with its first failure
};
