// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Disable and destroy while the daemon is absent or does not complete the handshake.
#include <cstring>

#include "DaemonStatesFixture.h"

namespace torture {
namespace {

using Test = DaemonStatesTest;

sockaddr_un addressOf(const std::string& path) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  strncpy(address.sun_path, path.c_str(), sizeof(address.sun_path) - 1);
  return address;
}

// A socket file without a listener, as a killed daemon leaves it.
void leaveStaleSocket(Test& test) {
  const sockaddr_un address = addressOf(test.daemon().socketPath());
  const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  EXPECT_EQ(0, bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)));
  close(fd);
}

// Fills the backlog, so that a connect must wait.
void fillBacklog(Test& test) {
  test.daemon().setAccepting(false);
  test.start();
  const sockaddr_un address = addressOf(test.daemon().socketPath());
  for (int result = 0; result == 0;) {
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    result = connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address));
    test.hold(fd);
  }
}

void sayNothing(int, uint32_t) {}
void halfInit(int fd, uint32_t) {
  const int32_t type = orbsim::kHandshakeInit;
  (void)send(fd, &type, sizeof(type), MSG_NOSIGNAL);
}
void init(int fd, uint32_t id) { orbsim::sendHandshakeRecord(fd, orbsim::kHandshakeInit, id); }
void initAndReply(int fd, uint32_t id) {
  orbsim::HandshakeReply reply;
  init(fd, id);
  orbsim::readHandshakeReply(fd, reply);
}
void halfComplete(int fd, uint32_t id) {
  const int32_t type = orbsim::kHandshakeComplete;
  initAndReply(fd, id);
  (void)send(fd, &type, sizeof(type), MSG_NOSIGNAL);
}
void wholeHandshake(int fd, uint32_t id) {
  orbsim::HandshakeReply reply;
  orbsim::performHandshake(fd, id, reply);
}

// The whole handshake; then each send of the client fails.
void readNoMore(Test& test) {
  test.daemon().setHandshake([&test](int fd, uint32_t id) {
    initAndReply(fd, id);
    shutdown(fd, SHUT_RD);
    orbsim::sendHandshakeRecord(fd, orbsim::kHandshakeComplete, id);
    test.reached();
    pollfd end = {fd, POLLHUP, 0};
    poll(&end, 1, -1);
    return false;
  });
  test.start();
}

constexpr bool kHangUp = true;
constexpr bool kStay = false;
template <Test::Script kScript, bool kHang>
void play(Test& test) {
  test.shakeHands(kScript, kHang);
}
// The worker connects one service after the other. While it waits for one, it does not reach the
// next.
void stuck(Test& test) { test.waitReached(1); }
void allTurnedDown(Test& test) { test.waitReached(test.services().size()); }

class DisableInHandshake : public DaemonStatesTest {};

TEST_P(DisableInHandshake, IsInTimeAndLeavesNothing) { disableEach(); }

const DaemonState kStates[] = {
    {"NoSocketFile", [](Test&) {}, [](Test&) { Test::waitForLine("Connect ret: -1"); }},
    {"NobodyBehindTheSocket", leaveStaleSocket,
     [](Test&) { Test::waitForLine("Connect ret: -1"); }},
    {"BacklogFull", fillBacklog, [](Test&) { Test::waitForLine("Connect ret: -1"); }},
    {"NobodyAccepts",
     [](Test& test) {
       test.daemon().setAccepting(false);
       test.start();
     },
     [](Test&) { Test::waitForLine("Connect ret: 0"); }},
    {"SilentAfterAccept", play<sayNothing, kStay>, stuck},
    {"SilentAfterHalfInit", play<halfInit, kStay>, allTurnedDown},
    {"SilentAfterInit", play<init, kStay>, stuck},
    {"SilentAfterTheReply", play<initAndReply, kStay>, stuck},
    {"SilentAfterHalfComplete", play<halfComplete, kStay>, allTurnedDown},
    {"DiesAfterAccept", play<sayNothing, kHangUp>, allTurnedDown},
    {"DiesAfterHalfInit", play<halfInit, kHangUp>, allTurnedDown},
    {"DiesAfterInit", play<init, kHangUp>, allTurnedDown},
    {"DiesAfterTheReply", play<initAndReply, kHangUp>, allTurnedDown},
    {"DiesAfterHalfComplete", play<halfComplete, kHangUp>, allTurnedDown},
    {"DiesAfterComplete", play<wholeHandshake, kHangUp>, allTurnedDown},
    {"ReadsNoMoreAfterComplete", readNoMore, allTurnedDown},
};

INSTANTIATE_TEST_SUITE_P(Daemon, DisableInHandshake, ::testing::ValuesIn(kStates),
                         [](const auto& state) { return state.param.name; });

}  // namespace
}  // namespace torture
