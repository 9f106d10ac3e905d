// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "RelayConnection.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "orbtool/SocketAddress.h"

namespace orbsim {
namespace {

constexpr size_t kPiece = 64 * 1024;

bool wouldBlock(int error) { return error == EAGAIN || error == EWOULDBLOCK || error == EINTR; }

// The peer has closed the connection: both directions have ended.
bool hungUp(int fd) {
  pollfd state = {fd, 0, 0};
  return ::poll(&state, 1, 0) > 0 && (state.revents & (POLLHUP | POLLERR)) != 0;
}

}  // namespace

RelayConnection::RelayConnection(int clientFd, uint32_t number, const RelayOptions& options,
                                 Clock::time_point start)
    : mOptions(options),
      mStart(start),
      mNumber(number),
      mProcess(processBehind(clientFd)),
      mTracer(options.trace ? std::make_unique<Tracer>(number, mProcess, options.trace) : nullptr),
      mClientFd(clientFd) {
  record(RecordedEvent::Kind::kOpen, Direction::kToDaemon, {});
  log("open");
  connectDaemon();
}

RelayConnection::~RelayConnection() {
  finish("ended by the relay");
  ::close(mClientFd);
  if (mDaemonFd >= 0) ::close(mDaemonFd);
}

// If the backlog of the daemon is full, it accepts the connection later. addTo() does not wait for
// that, because it cannot be polled.
void RelayConnection::connectDaemon() {
  const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (fd >= 0 && orbtool::SocketAddress(mOptions.daemonPath).connect(fd) == 0) {
    mDaemonFd = fd;
    return;
  }
  const int error = errno;
  if (fd >= 0) ::close(fd);
  if (!wouldBlock(error)) finish(std::string("no daemon: ") + std::strerror(error));
}

int RelayConnection::source(const Pipe& pipe) const {
  return pipe.direction == Direction::kToDaemon ? mClientFd : mDaemonFd;
}

int RelayConnection::target(const Pipe& pipe) const {
  return pipe.direction == Direction::kToDaemon ? mDaemonFd : mClientFd;
}

short RelayConnection::wanted(int fd) const {
  const Pipe& in = fd == mClientFd ? mUp : mDown;
  const Pipe& out = fd == mClientFd ? mDown : mUp;
  short events = 0;
  if (!over(in) && in.pending.empty()) events |= POLLIN;
  if (!out.done && !out.pending.empty()) events |= POLLOUT;
  return events;
}

void RelayConnection::addTo(pollfd& client, pollfd& daemon) const {
  client = daemon = {-1, 0, 0};
  if (mFinished) return;
  if (mDaemonFd < 0) {
    client.fd = mClientFd;  // only to notice the disconnection
    return;
  }
  client.events = wanted(mClientFd);
  daemon.events = wanted(mDaemonFd);
  // poll always reports a disconnected peer. If its data are still blocked, it must not be polled,
  // or the poll would return at once again and again. If all its data were read, the disconnection
  // is the event to wait for.
  if (client.events != 0 || (over(mUp) && !mDown.done)) client.fd = mClientFd;
  if (daemon.events != 0 || (over(mDown) && !mUp.done)) daemon.fd = mDaemonFd;
}

void RelayConnection::handle(short clientEvents, short daemonEvents) {
  if (mFinished) return;
  if (mDaemonFd < 0) {
    if ((clientEvents & POLLHUP) != 0) {
      finish("closed by the client before the daemon accepted it");
    } else {
      connectDaemon();
    }
    return;
  }
  if (daemonEvents != 0) handleSide(mDaemonFd, daemonEvents);
  if (clientEvents != 0) handleSide(mClientFd, clientEvents);
  if (mUp.done && mDown.done) finish("closed");
}

void RelayConnection::handleSide(int fd, short events) {
  Pipe& in = fd == mClientFd ? mUp : mDown;
  Pipe& out = fd == mClientFd ? mDown : mUp;
  if ((events & POLLOUT) != 0) write(out);
  const bool gone = (events & (POLLHUP | POLLERR)) != 0;
  if ((events & POLLIN) != 0 || (gone && !over(in) && in.pending.empty())) read(in);
  if (gone && over(in)) breakOff(out);
}

void RelayConnection::read(Pipe& pipe) {
  Blob bytes(kPiece);
  const ssize_t got = ::recv(source(pipe), bytes.data(), bytes.size(), MSG_DONTWAIT);
  if (got < 0 && wouldBlock(errno)) return;
  if (got > 0) {
    bytes.resize(static_cast<size_t>(got));
    pipe.total += bytes.size();
    pipe.pending = bytes;
    pipe.offset = 0;
    write(pipe);
    tell(pipe, bytes);
    return;
  }
  // A reset is also an end; data before it were already read.
  pipe.ended = true;
  record(RecordedEvent::Kind::kEnd, pipe.direction, {});
  if (mTracer) mTracer->end(pipe.direction);
  if (hungUp(source(pipe))) breakOff(reverse(pipe));
  passEnd(pipe);
}

void RelayConnection::write(Pipe& pipe) {
  while (!pipe.done && pipe.offset < pipe.pending.size()) {
    const ssize_t sent = ::send(target(pipe), pipe.pending.data() + pipe.offset,
                                pipe.pending.size() - pipe.offset, MSG_NOSIGNAL | MSG_DONTWAIT);
    if (sent < 0 && errno == EINTR) continue;
    if (sent < 0 && wouldBlock(errno)) return;
    if (sent < 0) {
      breakOff(pipe);
      return;
    }
    pipe.offset += static_cast<size_t>(sent);
  }
  pipe.pending.clear();
  pipe.offset = 0;
  passEnd(pipe);
}

// The other side gets the end after all data before it.
void RelayConnection::passEnd(Pipe& pipe) {
  if (pipe.done || !pipe.ended || !pipe.pending.empty()) return;
  pipe.done = true;
  ::shutdown(target(pipe), SHUT_WR);
}

// Nobody receives data of this direction any more; the sender must notice this at once.
void RelayConnection::breakOff(Pipe& pipe) {
  if (pipe.done) return;
  pipe.done = true;
  if (pipe.offset < pipe.pending.size())
    log(std::to_string(pipe.pending.size() - pipe.offset) + " bytes could not be delivered");
  pipe.pending.clear();
  pipe.offset = 0;
  ::shutdown(source(pipe), SHUT_RD);
}

void RelayConnection::finish(const std::string& how) {
  if (mFinished) return;
  mFinished = true;
  if (mTracer) {
    mTracer->end(Direction::kToDaemon);
    mTracer->end(Direction::kToClient);
  }
  record(RecordedEvent::Kind::kClosed, Direction::kToDaemon, {});
  log(how + ", " + std::to_string(mUp.total) + " bytes to the daemon, " +
      std::to_string(mDown.total) + " to the client");
}

void RelayConnection::tell(const Pipe& pipe, const Blob& bytes) {
  record(RecordedEvent::Kind::kBytes, pipe.direction, bytes);
  if (mTracer) mTracer->feed(pipe.direction, bytes.data(), bytes.size());
}

void RelayConnection::record(RecordedEvent::Kind kind, Direction direction, const Blob& bytes) {
  if (!mOptions.record) return;
  RecordedEvent event;
  event.time = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - mStart);
  event.connection = mNumber;
  event.kind = kind;
  event.direction = direction;
  event.bytes = bytes;
  event.process = mProcess;
  mOptions.record(event);
}

void RelayConnection::log(const std::string& line) const {
  if (mOptions.log)
    mOptions.log("connection " + std::to_string(mNumber) + " " + processText(mProcess) + " " +
                 line);
}

}  // namespace orbsim
