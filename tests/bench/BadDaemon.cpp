// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "BadDaemon.h"

#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/timerfd.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "orbsim/Daemon.h"
#include "orbsim/Handshake.h"

namespace {

constexpr int kPatienceMs = 10000;
int events = -1;  // the daemon's side of BadDaemon::mEvents

void tell() { (void)!::write(events, "", 1); }

// Waits for the end of the connection, not for a shutdown of one direction.
bool untilHangUp(int fd) {
  pollfd end = {fd, 0, 0};
  while (::poll(&end, 1, -1) < 0 && errno == EINTR) {
  }
  return false;
}

bool silent(int fd, unsigned) {
  tell();
  return untilHangUp(fd);
}

// Completes the handshake, shuts down the given directions and then reads nothing.
bool connected(int fd, unsigned sessionId, int shutDown) {
  orbsim::HandshakeReply reply;
  if (!orbsim::performHandshake(fd, sessionId, reply)) return false;
  if (shutDown >= 0) ::shutdown(fd, shutDown);
  tell();
  return untilHangUp(fd);
}
bool readsNoMore(int fd, unsigned sessionId) { return connected(fd, sessionId, SHUT_RD); }
bool writesNoMore(int fd, unsigned sessionId) { return connected(fd, sessionId, SHUT_WR); }
bool doesNotRead(int fd, unsigned sessionId) { return connected(fd, sessionId, -1); }

// A status "success" of the service that sent @p bytes; empty if they are no frame.
orbsim::Blob statusFor(const orbsim::Blob& bytes, unsigned sessionId) {
  orbsim::FrameReader reader;
  orbsim::Frame request;
  reader.feed(bytes.data(), bytes.size());
  if (reader.next(request.header, request.payload) != orbsim::FrameReader::Result::kFrame)
    return {};
  const orbsim::Blob payload =
      orbsim::encodeBlobPayload(request.sdkType(), {0x1a, 0x04, 0x0a, 0x02, 0x08, 0x01});
  orbsim::Header header;
  header.source = request.header.destination;
  header.destination = request.header.source;
  header.messageId = orbsim::kSendBlobMessageId;
  header.sessionId = sessionId;
  header.payloadLength = payload.size();
  return orbsim::encodeFrame(header, payload);
}

// Reads everything and sends status after status, one byte each millisecond.
bool trickles(int fd, unsigned sessionId) {
  orbsim::HandshakeReply reply;
  if (!orbsim::performHandshake(fd, sessionId, reply)) return false;
  orbsim::Blob input(64 * 1024);
  ssize_t got = ::recv(fd, input.data(), input.size(), 0);
  if (got <= 0) return false;
  input.resize(static_cast<size_t>(got));
  const orbsim::Blob status = statusFor(input, sessionId);
  if (status.empty()) return false;
  const int timer = ::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC);
  const itimerspec millisecond = {{0, 1000000}, {0, 1000000}};
  ::timerfd_settime(timer, 0, &millisecond, nullptr);
  tell();
  input.resize(64 * 1024);
  for (size_t next = 0; got > 0;) {
    pollfd waited[2] = {{fd, POLLIN, 0}, {timer, POLLIN, 0}};
    if (::poll(waited, 2, -1) < 0) continue;
    if (waited[0].revents != 0) got = ::recv(fd, input.data(), input.size(), 0);
    uint64_t due = 0;
    if (waited[1].revents != 0 && ::read(timer, &due, sizeof due) < 0) break;
    for (; due > 0; --due, next = (next + 1) % status.size()) {
      if (::send(fd, &status[next], 1, MSG_NOSIGNAL) < 0) got = 0;
    }
  }
  ::close(timer);
  return false;
}

// There is a socket file without a listener.
bool leaveSocket() {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, orbsim::kSocketPath, sizeof orbsim::kSocketPath);
  const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const bool bound = ::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
  ::close(fd);
  return bound;
}

[[noreturn]] void serve(const BadState& state) {
  orbsim::Options options;
  options.record = false;
  orbsim::Daemon daemon(options);
  daemon.setHandshake(state.script);
  if (daemon.start()) {
    tell();
    for (;;) ::pause();
  }
  std::fprintf(stderr, "states_bench: %s; run it in scripts/sandbox\n", daemon.error().c_str());
  ::_exit(1);
}

bool comes(int fd) {
  pollfd event = {fd, POLLIN, 0};
  char byte = 0;
  return ::poll(&event, 1, kPatienceMs) == 1 && ::read(fd, &byte, 1) == 1;
}

}  // namespace

const std::array<BadState, 7> kBadStates = {{
    {"absent", 0, nullptr},
    {"refusing", 0, nullptr},
    {"silent", 1, silent},
    {"half-closed, reads no more", 3, readsNoMore},
    {"half-closed, writes no more", 3, writesNoMore},
    {"not reading", 3, doesNotRead},
    {"one byte a millisecond", 3, trickles},
}};

BadDaemon::BadDaemon(const BadState& state) : mState(state) {
  if (state.script == nullptr) {
    mReady = std::strcmp(state.name, "refusing") != 0 || leaveSocket();
    return;
  }
  int ends[2] = {-1, -1};
  if (::pipe(ends) != 0) return;
  mProcess = ::fork();
  if (mProcess == 0) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    ::close(ends[0]);
    events = ends[1];
    serve(state);
  }
  ::close(ends[1]);
  mEvents = ends[0];
  mReady = comes(mEvents);
}

BadDaemon::~BadDaemon() {
  if (mProcess > 0) {
    ::kill(mProcess, SIGKILL);
    ::waitpid(mProcess, nullptr, 0);
  }
  if (mEvents >= 0) ::close(mEvents);
  ::unlink(orbsim::kSocketPath);
}

bool BadDaemon::waitForConnections() const {
  for (int i = 0; i < mState.connections; ++i) {
    if (!comes(mEvents)) return false;
  }
  return true;
}
