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
  if (sockFd >= 0) mSocketFd = std::make_shared<UniqueFd>(sockFd);
  if (!ownThread) return;
  setRunning();
  mHandlerThread = std::make_unique<std::thread>();
  if (!startThread(*mHandlerThread, "orb-ipc", [this] { threadFunc(); })) {
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
  if (mHandlerThread->get_id() == std::this_thread::get_id()) {
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
      endConnection(-1);
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
  sendFrame(msg->serialize(), msg->id(), 0);
}

void OrbIpcSession::handleOrbIpcRawMessage(const std::shared_ptr<OrbIpcRawMessage>& msg) {
  ORB_LOGD("subsystem id: %d msg id: %d", static_cast<int>(msg->mSubsystemId),
           static_cast<int>(msg->mMsgId));
  if (!mConnected) {
    ORB_LOGE("IPC socket is not connected");
    return;
  }
  sendFrame(msg->mPayload, msg->mMsgId, static_cast<long>(msg->mSubsystemId));
}

bool OrbIpcSession::sendFrame(const std::vector<unsigned char>& payload, unsigned int msgId,
                              long subsystemId, int flags) {
  return ProcessUtilsWrapper::sendMsg(payload.data(), payload.size(), msgId, subsystemId,
                                      static_cast<unsigned long>(toWire(mOwn)),
                                      static_cast<unsigned long>(toWire(mPeer)), mSessionId, flags);
}

bool OrbIpcSession::sendAtOnce(OrbIpcMessage& msg) {
  // The thread may be the application's: a connection that is gone must not raise a signal there.
  return mConnected && sendFrame(msg.serialize(), msg.id(), 0, MSG_DONTWAIT | MSG_NOSIGNAL);
}

void OrbIpcSession::handleSessionEnd(unsigned int sessionId) {
  ORB_LOGD("handleSessionEnd for session %u", sessionId);
  std::shared_ptr<OrbIpcMessage> message;
  try {
    message = std::make_shared<OrbIpcSessionEndMessage>(sessionId);
  } catch (const std::bad_alloc&) {
    endConnection(-1);  // on this thread then: the end of a connection is never missed
    return;
  }
  postToSelf(std::move(message));
}

void OrbIpcSession::handleReceiverEnd(int sockFd) {
  // The receiver speaks of a session by its id, and 0 stands for none: a session with that id
  // learns of its end here.
  endConnection(sockFd);
}

// The socket is lost. With @p lostFd only when it is still the session's own (the receiver that
// asks holds it open, so the number is nobody else's).
void OrbIpcSession::endConnection(int lostFd) {
  SharedSocket lost;  // the receiver closes it
  {
    const LockGuard lock(mStateLock);
    if (lostFd >= 0 && (!mSocketFd || mSocketFd->get() != lostFd)) return;
    mConnected = false;
    mGlobals.reset();
    mRegisteredSocket.reset();
    lost.swap(mSocketFd);
  }
  if (lost) notifyConnectionStatus(false);
}

bool OrbIpcSession::registerReceiverHandler(const SharedSocket& socket) {
  const auto globals = getProcessUtilsGlobals();
  {
    const LockGuard lock(mStateLock);
    mGlobals = globals;
    mRegisteredSocket = socket;
    mReceiverStarted = true;
    mEndSignalled = false;
  }
  mConnected = true;
  if (registerSocket(static_cast<unsigned long>(toWire(mPeer)), mSessionId, socket,
                     std::static_pointer_cast<ProcessHandler>(shared_from_this()))) {
    return true;
  }
  const LockGuard lock(mStateLock);
  mConnected = false;
  mGlobals.reset();
  mRegisteredSocket.reset();
  mReceiverStarted = false;
  mEndSignalled = true;
  return false;
}

void OrbIpcSession::deregisterReceiverHandler() {
  std::shared_ptr<ProcessUtilsGlobals> globals;
  SharedSocket registered;
  {
    const LockGuard lock(mStateLock);
    globals.swap(mGlobals);
    registered.swap(mRegisteredSocket);
  }
  if (!globals) return;
  deregisterSocket(static_cast<unsigned long>(toWire(mPeer)), mSessionId, registered.get());
}

SharedSocket OrbIpcSession::takeSocket(bool forGood) {
  SharedSocket socket;
  {
    const LockGuard lock(mStateLock);
    if (forGood) mClosedForGood = true;
    mConnected = false;
    socket.swap(mSocketFd);
  }
  mStateChanged.notify_all();
  if (socket) {
    ORB_LOG_AS(3, __FILE__, "cleanup", "closing socket Fd %d", socket->get());
    // Wakes whoever is blocked in a receive or a send on it; the last holder closes the number.
    shutdown(socket->get(), SHUT_RDWR);
  }
  return socket;
}

void OrbIpcSession::cleanup() {
  if (takeSocket(false)) {
    std::shared_ptr<Semaphore> ended;
    {
      const LockGuard lock(mStateLock);
      if (!mEndSignalled) ended = mThreadSemaphore;
    }
    if (ended && !isReceiverThreadOf(ended.get())) ended->decrease();
  }
  deregisterReceiverHandler();
}

void OrbIpcSession::beginClose() {
  // First of all: the daemon may give the session's id away as soon as it sees the end.
  deregisterReceiverHandler();
  takeSocket(true);
}

void OrbIpcSession::stopRetrying() {
  {
    const LockGuard lock(mStateLock);
    mStopRetrying = true;
  }
  mStateChanged.notify_all();
}

bool OrbIpcSession::awaitReceiver(std::chrono::milliseconds timeout) {
  std::shared_ptr<Semaphore> ended;
  {
    const LockGuard lock(mStateLock);
    if (!mReceiverStarted) return true;
    ended = mThreadSemaphore;
  }
  if (isReceiverThreadOf(ended.get())) return true;
  if (!ended->decreaseFor(timeout)) return false;
  ended->increase();  // the end stays visible to whoever asks next
  return true;
}
