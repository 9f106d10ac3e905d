// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

// A client session of the library with the daemon stand-in, at the fixed socket path.

#include <gtest/gtest.h>
#include <signal.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "IpcTestSupport.h"
#include "OrbIpcClientSession.h"
#include "RegisteredSockets.h"
#include "orbsim/Daemon.h"

namespace ipctest {

using Bytes = std::vector<unsigned char>;

// The statuses a session reported, in order.
using Statuses = Recorder<bool>;

class SessionTest : public ::testing::Test {
 protected:
  void SetUp() override {
    signal(SIGPIPE, SIG_IGN);
    mDaemon.setAutoAnswer(false);
    ASSERT_TRUE(mDaemon.start()) << mDaemon.error();
    recording::clear();
    mSession = makeSession();
  }
  void TearDown() override {
    if (mSession) mSession->cleanup();  // a receiver that is still in a call keeps the session
    mSession.reset();
    mDaemon.stop();
    EXPECT_TRUE(noneRegistered());
  }

  static std::shared_ptr<OrbIpcClientSession> makeSession(bool ownThread = false) {
    return std::make_shared<OrbIpcClientSession>(ProcessId::LCE, ownThread);
  }
  void connect(OrbIpcClientSession& session, Statuses& statuses) {
    session.connectToServer([&statuses](bool connected) { statuses.add(connected); });
  }
  void connect() { connect(*mSession, mStatuses); }
  void connectAndExpectSuccess() {
    connect();
    ASSERT_EQ((std::vector<bool>{true}), mStatuses.all());
    ASSERT_TRUE(mDaemon.waitForSessions(1));
  }

  static bool noneRegistered() { return !processstate::socketsRegistered(); }

  // The descriptor number of the session's current or last socket.
  static int lastSocket() {
    const std::string head = "Created socket; mSocketFd: ";
    int fd = -1;
    for (const auto& entry : logged()) {
      if (entry.second.rfind(head, 0) == 0) fd = std::atoi(entry.second.c_str() + head.size());
    }
    return fd;
  }

  orbsim::Daemon mDaemon;
  Statuses mStatuses;
  std::shared_ptr<OrbIpcClientSession> mSession;
};

// A frame as a receiver passes it on.
class FrameBuffer {
 public:
  FrameBuffer(uint64_t msgId, int64_t subsystemId, const Bytes& payload)
      : mWords((sizeof(ipcMsg_t) + payload.size() + 7) / 8) {
    *frame() = {1, 105, msgId, subsystemId, 1, payload.size()};
    if (!payload.empty()) memcpy(frame()->payload(), payload.data(), payload.size());
  }
  ipcMsg_t* frame() { return reinterpret_cast<ipcMsg_t*>(mWords.data()); }

 private:
  std::vector<uint64_t> mWords;
};

}  // namespace ipctest
