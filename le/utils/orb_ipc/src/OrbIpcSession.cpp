// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Life of the session, dispatch of its messages, sending and receiving. Connecting is in
// OrbIpcConnect.cpp.
#include "OrbIpcSession.h"

#include <sys/socket.h>

#include <new>
#include <utility>

#include "Thread.h"

OrbIpcSession::OrbIpcSession(int sockFd, unsigned int sessionId, ProcessId own, ProcessId peer,
                             bool ownThread)
    : mOwn(own), mPeer(peer), mSessionId(sessionId) {
  if (sockFd >= 0) {
    mConnection =
        std::make_shared<OrbIpcConnection>(std::make_shared<IpcSocket>(sockFd), threadSemaphore());
    mConnection->sessionId = sessionId;
  }
  if (!ownThread) return;
  setRunning();
  mHandlerThread = std::make_unique<Thread>();
  if (!startThread(*mHandlerThread, "orb-ipc", ThreadWork::Callbacks, [this] { threadFunc(); })) {
    mHandlerThread.reset();
    stop();  // without the thread every message is handled where it is posted
  }
}

OrbIpcSession::~OrbIpcSession() {
  stopHandlerThread();
  cleanup();
}

void OrbIpcSession::stopHandlerThread() {
  if (!mHandlerThread) return;
  stop();
  if (mHandlerThread->isHere()) {
    mHandlerThread->detach();
  } else {
    mHandlerThread->join();
  }
  mHandlerThread.reset();
}

void OrbIpcSession::threadFunc() { start(); }

bool OrbIpcSession::send(std::shared_ptr<OrbIpcMessage> msg) {
  if (!mConnected) return false;
  postToSelf(std::move(msg));
  return true;
}

bool OrbIpcSession::send(unsigned int subsystemId, unsigned int msgId,
                         std::vector<unsigned char> payload) {
  return send(std::make_shared<OrbIpcRawMessage>(subsystemId, msgId, std::move(payload)));
}

void OrbIpcSession::registerForMessages(
    std::unordered_map<unsigned int, IpcMsgConstructorHandlerPair_t> entries) {
  mRegistry.merge(entries);
}

void OrbIpcSession::registerForRawMessage(RawMessageHandler handler) {
  mRawMessageHandler = std::move(handler);
}

void OrbIpcSession::handleEvent(std::shared_ptr<OrbIpcMessage> msg) {
  if (!msg) {
    ORB_LOGE("msg is nullptr!!!!");
    return;
  }
  switch (msg->id()) {
    case OrbIpcRawMessage::ID:
      ORB_LOGD("case OrbIpcRawMessage::ID: %d", msg->id());
      handleOrbIpcRawMessage(std::static_pointer_cast<OrbIpcRawMessage>(msg));
      break;
    case OrbIpcConnectToServerMessage::ID:
      ORB_LOGD("case OrbIpcConnectToServerMessage::ID: %d", msg->id());
      handleConnectToOrbEvent();
      break;
    case OrbIpcIncomingRawMessage::ID:
      ORB_LOGD("case OrbIpcIncomingRawMessage::ID: %d", msg->id());
      handleOrbIpcIncomingRawMessage(std::static_pointer_cast<OrbIpcIncomingRawMessage>(msg));
      break;
    case OrbIpcSessionEndMessage::ID:
      ORB_LOGD("case OrbIpcSessionEndMessage::ID: %d", msg->id());
      endConnection(std::static_pointer_cast<OrbIpcSessionEndMessage>(msg)->mReceiver);
      break;
    default:
      ORB_LOGD("case default");
      handleSendMessage(msg);
      break;
  }
}

void OrbIpcSession::handleMsg(ipcMsg_t* frame) {
  if (frame == nullptr) {
    ORB_LOGE("ipcMsg is null");
    return;
  }
  const auto msgId = static_cast<unsigned int>(frame->msgId);
  const auto subsystemId = static_cast<unsigned int>(frame->subsystemId);
  ORB_LOGD("Received IPC message id: %d, state: %d", static_cast<int>(msgId),
           static_cast<int>(subsystemId));
  std::vector<unsigned char> payload(frame->payload(), frame->payload() + frame->payloadLength);
  postToSelf(std::make_shared<OrbIpcIncomingRawMessage>(subsystemId, msgId, std::move(payload)));
}

void OrbIpcSession::handleOrbIpcIncomingRawMessage(
    const std::shared_ptr<OrbIpcIncomingRawMessage>& msg) {
  if (!msg) {
    ORB_LOGE("msg is nullptr");
    return;
  }
  ORB_LOGE("handling OrbIpcIncomingRawMessage");
  ORB_LOGE("DEBUG: msgId: %d", static_cast<int>(msg->id()));
  ORB_LOGD("SubSystemId: %d, MsgId", static_cast<int>(msg->mSubsystemId));
  if (mRawMessageHandler) {
    ORB_LOGD("Found raw message handler");
    mRawMessageHandler(msg->mSubsystemId, msg->mMsgId, std::move(msg->mPayload));
    return;
  }
  const auto found = mRegistry.find(msg->mMsgId);
  if (found == mRegistry.end()) {
    ORB_LOGE("No MessageConstructor registered for msg: %d", static_cast<int>(msg->mMsgId));
    return;
  }
  ORB_LOGD("Found message constructor; constructing msg");
  if (!found->second.constructor || !found->second.handler) {
    ORB_LOGD("Invalid MessageHandler");
    return;
  }
  ORB_LOGD("Found message handler; calling handler");
  const auto built = found->second.constructor(std::move(msg->mPayload));
  if (built) built->setSession(shared_from_this());
  found->second.handler(built);
}

void OrbIpcSession::handleSendMessage(const std::shared_ptr<OrbIpcMessage>& msg) {
  ORB_LOGD("msg id: %d", static_cast<int>(msg->id()));
  if (!mConnected) {
    ORB_LOGE("IPC socket is not connected");
    return;
  }
  sendFrame(msg->serializeBehind(sizeof(ipcMsg_t)), msg->id(), 0);
}

void OrbIpcSession::handleOrbIpcRawMessage(const std::shared_ptr<OrbIpcRawMessage>& msg) {
  ORB_LOGD("subsystem id: %d msg id: %d", static_cast<int>(msg->mSubsystemId),
           static_cast<int>(msg->mMsgId));
  if (!mConnected) {
    ORB_LOGE("IPC socket is not connected");
    return;
  }
  sendFrame(msg->serializeBehind(sizeof(ipcMsg_t)), msg->mMsgId,
            static_cast<long>(msg->mSubsystemId));
}

bool OrbIpcSession::sendFrame(std::vector<unsigned char> frame, unsigned int msgId,
                              long subsystemId, int flags) {
  SharedSocket socket;
  unsigned int sessionId = 0;
  {
    const LockGuard lock(mStateLock);
    if (!mConnection || !mConnection->socket) return false;
    socket = mConnection->socket;
    sessionId = mConnection->sessionId;
  }
  auto* const msg = reinterpret_cast<ipcMsg_t*>(frame.data());
  *msg = {toWire(mOwn), toWire(mPeer), msgId,
          subsystemId,  sessionId,     frame.size() - sizeof(ipcMsg_t)};
  return sendIpc(*msg, *socket, flags);
}

bool OrbIpcSession::sendAtOnce(OrbIpcMessage& msg) {
  // The thread may be the application's: a connection that is gone must not raise a signal there.
  return mConnected &&
         sendFrame(msg.serializeBehind(sizeof(ipcMsg_t)), msg.id(), 0, MSG_DONTWAIT | MSG_NOSIGNAL);
}

bool OrbIpcSession::awaitRoom(std::chrono::steady_clock::time_point end) {
  SharedSocket socket;
  {
    const LockGuard lock(mStateLock);
    if (mConnection) socket = mConnection->socket;
  }
  return socket && ::awaitRoom(*socket, end);
}

void OrbIpcSession::handleSessionEnd(unsigned int sessionId) {
  ORB_LOGD("handleSessionEnd for session %u", sessionId);
  auto receiver = semaphoreOfThisReceiver();
  std::shared_ptr<OrbIpcMessage> message;
  try {
    message = std::make_shared<OrbIpcSessionEndMessage>(sessionId, receiver);
  } catch (const std::bad_alloc&) {
    endConnection(receiver);  // on this thread then: the end of a connection is never missed
    return;
  }
  postToSelf(std::move(message));
}

void OrbIpcSession::handleReceiverEnd(int) {
  // handleSessionEnd() does not come for a session with id 0, nor for one whose id belongs to a new
  // socket: such a session is told of its end here.
  endConnection(semaphoreOfThisReceiver(), true);
}

// The connection whose receiver signals @p receiver has ended; without @p receiver, the latest one.
// Reports the loss, unless the session has closed the connection or has a later one.
void OrbIpcSession::endConnection(const std::shared_ptr<Semaphore>& receiver, bool lastWord) {
  bool lost = false;
  std::shared_ptr<OrbIpcSession> kept;  // released after the report, also if that throws
  {
    const LockGuard lock(mStateLock);
    if (!mConnection || (receiver && receiver != mConnection->ended)) return;
    lost = mConnection->socket != nullptr;
    if (lost) mConnected = false;
    mConnection->socket.reset();  // the receiver closes it
    // In the same step: without a socket, no thread sets keptSession any more.
    if (lastWord) kept.swap(mConnection->keptSession);
  }
  if (lost) notifyConnectionStatus(false);
}

bool OrbIpcSession::registerReceiverHandler() {
  Connection connection;
  unsigned int sessionId = 0;
  {
    const LockGuard lock(mStateLock);
    connection = mConnection;
    if (connection) sessionId = connection->sessionId;
  }
  return connection && startReceiver(connection, sessionId);
}

bool OrbIpcSession::startReceiver(const Connection& connection, unsigned int sessionId) {
  using EndTold = OrbIpcConnection::EndTold;
  const auto globals = getProcessUtilsGlobals();
  SharedSocket socket;
  EndTold before = EndTold::ByNobody;
  {
    const LockGuard lock(mStateLock);
    if (!connection->socket || connection->endTold == EndTold::ByReceiver) return false;
    socket = connection->socket;
    before = std::exchange(connection->endTold, EndTold::ByReceiver);
    connection->sessionId = sessionId;
    connection->globals = globals;
    mSessionId = sessionId;
    mConnected = true;  // the first frame may ask for a send before this thread goes on
  }
  if (registerSocket(static_cast<unsigned long>(toWire(mPeer)), sessionId, std::move(socket),
                     std::static_pointer_cast<ProcessHandler>(shared_from_this()),
                     connection->ended)) {
    return true;
  }
  std::shared_ptr<OrbIpcSession> kept;
  const LockGuard lock(mStateLock);
  connection->endTold = before;
  connection->globals.reset();
  kept.swap(connection->keptSession);
  if (connection->socket) {
    mConnected = false;
  } else if (before == EndTold::ByNobody) {
    connection->ended->increase();  // the thread that closed it meanwhile waits for a receiver
  }
  return false;
}

void OrbIpcSession::deregisterReceiverHandler() {
  Connection connection;
  {
    const LockGuard lock(mStateLock);
    connection = mConnection;
  }
  if (connection) deregister(connection);
}

void OrbIpcSession::deregister(const Connection& connection) {
  std::shared_ptr<ProcessUtilsGlobals> globals;
  unsigned int sessionId = 0;
  {
    const LockGuard lock(mStateLock);
    globals.swap(connection->globals);
    sessionId = connection->sessionId;
  }
  if (!globals) return;
  const UniqueFd none;
  const SharedSocket socket = connection->identity.lock();  // not empty while the table holds it
  deregisterSocket(static_cast<unsigned long>(toWire(mPeer)), sessionId,
                   socket ? socket.get() : &none);
}

// Closes the connection: takes its socket out of the session and shuts it down. @p ended gets, in
// the same step, the semaphore that signals the end. The result is empty if there is nothing to
// close, and @p ended if there is nothing to wait for.
OrbIpcSession::Connection OrbIpcSession::closeConnection(bool forGood,
                                                         std::shared_ptr<Semaphore>& ended) {
  Connection connection;
  SharedSocket socket;
  {
    const LockGuard lock(mStateLock);
    if (forGood) mClosedForGood = true;
    if (mConnection && mConnection->socket) {
      mConnected = false;
      connection = mConnection;
      socket.swap(connection->socket);
      const auto endTold = connection->endTold;
      if (endTold != OrbIpcConnection::EndTold::ByNobody) ended = connection->ended;
      if (forGood && endTold == OrbIpcConnection::EndTold::ByReceiver) {
        connection->keptSession = weak_from_this().lock();
      }
    }
  }
  mStateChanged.notify_all();
  if (socket) {
    ORB_LOG_AS(ANDROID_LOG_DEBUG, __FILE__, "cleanup", "closing socket Fd %d", socket->get());
    // Wakes the threads that are blocked on it. The last holder closes the descriptor.
    shutdown(socket->get(), SHUT_RDWR);
  }
  return connection;
}

void OrbIpcSession::cleanup() {
  std::shared_ptr<Semaphore> ended;
  const Connection connection = closeConnection(false, ended);
  if (!connection) {
    // A receiver thread that is just ending deregisters its socket itself.
    if (!semaphoreOfThisReceiver()) deregisterReceiverHandler();
    return;
  }
  // This receiver thread does so after the call.
  if (isReceiverThreadOf(ended.get())) return;
  if (ended) {
    ended->decrease();
    const LockGuard lock(mStateLock);
    connection->endTold = OrbIpcConnection::EndTold::ByNobody;  // it was told
  }
  deregister(connection);
}

void OrbIpcSession::beginClose() {
  // The socket stays registered until its receiver deregisters it. Being shut down, it does not
  // block a new connection with the same id.
  std::shared_ptr<Semaphore> ended;
  closeConnection(true, ended);
}

void OrbIpcSession::stopRetrying() {
  {
    const LockGuard lock(mStateLock);
    mStopRetrying = true;
  }
  mStateChanged.notify_all();
}

bool OrbIpcSession::awaitReceiver(std::chrono::milliseconds timeout) {
  Connection connection;
  {
    const LockGuard lock(mStateLock);
    if (!mConnection || mConnection->endTold != OrbIpcConnection::EndTold::ByReceiver) return true;
    connection = mConnection;
  }
  const auto& ended = connection->ended;
  if (isReceiverThreadOf(ended.get())) return true;
  if (!ended->decreaseFor(timeout)) return false;
  ended->increase();  // so that the next call finds the end, too
  deregister(connection);
  return true;
}
