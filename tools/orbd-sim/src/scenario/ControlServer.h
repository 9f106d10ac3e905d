// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "Stage.h"
#include "orbsim/SocketPlace.h"
#include "orbsim/WakeFd.h"

namespace orbsim {

// The implementation of the control socket: a thread that reads lines and answers each. The owner's
// thread calls open() and close().
class ControlServer {
 public:
  ControlServer(Daemon& daemon, Stage& stage) : mDaemon(daemon), mStage(stage) {}
  ~ControlServer() { close(); }
  ControlServer(const ControlServer&) = delete;
  ControlServer& operator=(const ControlServer&) = delete;

  bool open(const std::string& path);
  const std::string& error() const { return mError; }
  void close();

  // The answer to one line.
  std::string answer(const std::string& line);

 private:
  struct Client {
    int fd;
    std::string input;
  };

  void loop();
  void accept();
  bool receive(Client& client);
  std::string status();

  Daemon& mDaemon;
  Stage& mStage;
  std::unique_ptr<SocketPlace> mPlace;
  std::string mError;
  WakeFd mWake;
  int mListenFd = -1;
  std::vector<Client> mClients;  // only for the thread
  bool mExhausted = false;       // no descriptor was left for a connection; only for the thread
  std::thread mThread;
};

}  // namespace orbsim
