// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>

#include "Built.h"
#include "Torture.h"

namespace torture {

// The program orbd-sim in a separate process. start() waits until it accepts connections; kill()
// ends it by SIGKILL.
class RealDaemon {
 public:
  RealDaemon() = default;
  RealDaemon(const RealDaemon&) = delete;
  RealDaemon& operator=(const RealDaemon&) = delete;
  ~RealDaemon() { kill(); }

  bool start() {
    const std::string program = built(ORBD_SIM_PROGRAM);
    const char* const arguments[] = {program.c_str(), "--quiet", "--interval", "1", nullptr};
    if (posix_spawn(&mProcess, program.c_str(), nullptr, nullptr,
                    const_cast<char* const*>(arguments), environ) != 0) {
      mProcess = -1;
    }
    return mProcess > 0 && comesTo(serves);
  }
  void kill() {
    if (mProcess <= 0) return;
    ::kill(mProcess, SIGKILL);
    waitpid(mProcess, nullptr, 0);
    mProcess = -1;
  }

 private:
  static bool serves() {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    strcpy(address.sun_path, "/dev/socket/orb");
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    const bool taken =
        connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
    close(fd);
    return taken;
  }
  pid_t mProcess = -1;
};

}  // namespace torture
