// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Connecting a session: socket, attempts, handshake. Before each step the thread checks under the
// lock whether the session was closed meanwhile: shutdown() of a socket does not end a connect.
#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <new>

#include "OrbIpcSession.h"

namespace {

// The names under which the log shows all lines of these two operations.
constexpr char kUnit[] = "le/utils/orb_ipc/src/OrbIpcSession.cpp";
constexpr char kConnect[] = "handleConnectToOrbEvent";
constexpr char kHandshake[] = "performHandshake";

constexpr char kSocketPath[] = "/dev/socket/orb";
constexpr int kAttempts = 50;
constexpr std::chrono::milliseconds kBetweenAttempts(100);

constexpr int32_t kHandshakeInit = 1;
constexpr int32_t kHandshakeResp = 2;
constexpr int32_t kHandshakeComplete = 3;
constexpr size_t kHandshakeRecord = 8;
constexpr ssize_t kMaxRead = 1023;

}  // namespace

void OrbIpcSession::handleConnectToOrbEvent() {
  SharedSocket socket;
  const Connection connection = openConnection(socket);
  if (!connection) return;
  Attempt result = Attempt::Failed;
  try {
    result = connectWithRetries(connection, socket);
  } catch (const std::bad_alloc&) {
    // Without memory the connect has failed.
  }
  socket.reset();
  concludeConnect(connection, result);
}

// The last step of a connect. This thread has released its share of the socket before: whoever is
// told of the end, or of a failure, may rely on a closed descriptor.
void OrbIpcSession::concludeConnect(const Connection& connection, Attempt result) {
  SharedSocket failed;
  bool closed = false;
  bool tellEnd = false;
  {
    const LockGuard lock(mStateLock);
    closed = !connection->socket;
    if (connection->endTold == OrbIpcConnection::EndTold::ByConnectingThread) {
      // A thread that closes waits for the end of the receiver. None was started, so this thread
      // signals the end.
      tellEnd = closed;
      connection->endTold = OrbIpcConnection::EndTold::ByNobody;
    }
    if (result != Attempt::Connected) failed.swap(connection->socket);
  }
  if (tellEnd) {
    ORB_LOG_AS(ANDROID_LOG_DEBUG, kUnit, kConnect, "Connect fail: mThreadSemaphore.increase");
    connection->ended->increase();
  }
  if (closed) return;
  if (failed) shutdown(failed->get(), SHUT_RDWR);
  failed.reset();
  notifyConnectionStatus(result == Attempt::Connected);
}

OrbIpcSession::Connection OrbIpcSession::openConnection(SharedSocket& socket) {
  if (!beginConnection(nullptr)) return nullptr;
  socket = std::make_shared<IpcSocket>();
  auto connection = std::make_shared<OrbIpcConnection>(socket, std::make_shared<Semaphore>());
  connection->endTold = OrbIpcConnection::EndTold::ByConnectingThread;
  socket->reset(
      openAboveStandardStreams([] { return ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0); }));
  ORB_LOG_AS(ANDROID_LOG_DEBUG, kUnit, kConnect, "Created socket; mSocketFd: %d", socket->get());
  if (socket->get() < 0 || !beginConnection(connection)) return nullptr;
  return connection;
}

// Makes @p connection the session's own. False if the session has a socket or is closed for good.
// Without a connection, it only says whether one could begin.
bool OrbIpcSession::beginConnection(Connection connection) {
  {
    const LockGuard lock(mStateLock);
    if (mClosedForGood) return false;
    if (!mConnection || !mConnection->socket) {
      if (!connection) return true;
      setThreadSemaphore(connection->ended);
      mConnection.swap(connection);  // the former one goes after the lock
      mConnected = false;
      return true;
    }
  }
  ORB_LOG_AS(ANDROID_LOG_ERROR, kUnit, kConnect, "mSocketFd != -1; RETURNING!!!");
  return false;
}

OrbIpcSession::Attempt OrbIpcSession::connectWithRetries(const Connection& connection,
                                                         SharedSocket& socket) {
  for (int left = kAttempts; isOpen(connection);) {
    if (connectOnce(socket->get())) return setUpConnection(connection, socket);
    if (--left == 0) {
      ORB_LOG_AS(ANDROID_LOG_DEBUG, kUnit, kConnect, "Connect fail: Max retry reached!!");
      return Attempt::Failed;
    }
    if (!waitBeforeRetry(connection)) return Attempt::Failed;
  }
  ORB_LOG_AS(ANDROID_LOG_DEBUG, kUnit, kConnect, "Connect fail: mSocketFd is -1; break");
  return Attempt::Closed;
}

// Does not block: with a full backlog a blocking connect could not be ended by closing the session.
bool OrbIpcSession::connectOnce(int fd) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  strncpy(address.sun_path, kSocketPath, sizeof(address.sun_path) - 1);
  const int flags = fcntl(fd, F_GETFL);
  fcntl(fd, F_SETFL, flags | O_NONBLOCK);
  const int result = ::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address));
  fcntl(fd, F_SETFL, flags & ~O_NONBLOCK);
  ORB_LOG_AS(ANDROID_LOG_DEBUG, kUnit, kConnect, "Connect ret: %d", result);
  return result == 0;
}

OrbIpcSession::Attempt OrbIpcSession::setUpConnection(const Connection& connection,
                                                      SharedSocket& socket) {
  // From here on closing the session ends the receive: the socket is connected, so shutdown()
  // works.
  if (!isOpen(connection)) {
    ORB_LOG_AS(ANDROID_LOG_DEBUG, kUnit, kConnect, "Connect fail: mSocketFd is -1; break");
    return Attempt::Closed;
  }
  unsigned int sessionId = 0;
  if (!performHandshake(socket->get(), sessionId)) return Attempt::Failed;
  socket.reset();  // so that the receiver is the last holder, which closes the descriptor
  if (!startReceiver(connection, sessionId)) return Attempt::Failed;
  ORB_LOG_AS(ANDROID_LOG_DEBUG, kUnit, kConnect, "Connect success: Handshake success");
  return Attempt::Connected;
}

bool OrbIpcSession::isOpen(const Connection& connection) {
  const LockGuard lock(mStateLock);
  return connection->socket != nullptr;
}

// False if no further attempt is wanted. True if the session was closed: the caller finds that out.
bool OrbIpcSession::waitBeforeRetry(const Connection& connection) {
  UniqueLock lock(mStateLock);
  mStateChanged.wait_for(lock, kBetweenAttempts, [&]() ORB_REQUIRES(mStateLock) {
    return mStopRetrying || !connection->socket;
  });
  return !mStopRetrying || !connection->socket;
}

// Fails unless the daemon has confirmed the session id that it proposed last.
bool OrbIpcSession::performHandshake(int fd, unsigned int& confirmed) {
  int32_t expectedSessionId = 0;
  int32_t type = 0;
  int32_t sessionId = 0;
  bool result = false;
  while (receiveHandshake(fd, type, sessionId)) {
    ORB_LOG_AS(ANDROID_LOG_DEBUG, kUnit, kHandshake, "handshakeEvtType: %d", type);
    if (type == kHandshakeInit) {
      expectedSessionId = sessionId;
      ORB_LOG_AS(ANDROID_LOG_DEBUG, kUnit, kHandshake, "Received HANDSHAKE_INIT; sessionId: %d",
                 sessionId);
      answerHandshake(fd, sessionId);
      continue;
    }
    if (type == kHandshakeComplete) {
      ORB_LOG_AS(ANDROID_LOG_DEBUG, kUnit, kHandshake, "HANDSHAKE_COMPLETE: receivedSessionId: %d",
                 sessionId);
      result = sessionId == expectedSessionId;
      if (result) confirmed = static_cast<unsigned int>(sessionId);
    } else {
      ORB_LOG_AS(ANDROID_LOG_ERROR, kUnit, kHandshake, "Unknown handshake type");
    }
    break;
  }
  ORB_LOG_AS(ANDROID_LOG_DEBUG, kUnit, kHandshake, "returning: result: %d", result ? 1 : 0);
  return result;
}

bool OrbIpcSession::receiveHandshake(int fd, int32_t& type, int32_t& sessionId) {
  unsigned char buffer[kMaxRead + 1];
  const ssize_t length = recv(fd, buffer, kMaxRead, 0);
  if (length == -1) {
    const int error = errno;
    ORB_LOG_AS(ANDROID_LOG_ERROR, kUnit, kHandshake, "recv returns error: errno: %d(%s)", error,
               strerror(error));
    return false;
  }
  ORB_LOG_AS(ANDROID_LOG_DEBUG, kUnit, kHandshake, "recv: len: %d", static_cast<int>(length));
  if (length > kMaxRead) {
    ORB_LOG_AS(ANDROID_LOG_ERROR, kUnit, kHandshake, "recv: readLen is greater than max size");
    return false;
  }
  if (static_cast<size_t>(length) != kHandshakeRecord) {
    ORB_LOG_AS(ANDROID_LOG_ERROR, kUnit, kHandshake,
               "Received data size does not match with expected size");
    return false;
  }
  memcpy(&type, buffer, sizeof(type));
  memcpy(&sessionId, buffer + sizeof(type), sizeof(sessionId));
  return true;
}

void OrbIpcSession::answerHandshake(int fd, int32_t sessionId) {
  const int32_t reply[] = {kHandshakeResp, sessionId, static_cast<int32_t>(mOwn)};
  ORB_LOG_AS(ANDROID_LOG_DEBUG, kUnit, kHandshake, "Sending HANDSHAKE_RESP");
  // A reply that does not get out shows in the next receive.
  (void)::send(fd, reply, sizeof(reply), sendFlags());
}
