// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orbctl/Signals.h"

#include <signal.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>

namespace orbctl {

Signals::Signals() {
  sigset_t taken;
  sigemptyset(&taken);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGWINCH}) {
    // A signal that the caller ignores (nohup) stays ignored.
    struct sigaction action = {};
    if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN) continue;
    sigaddset(&taken, signal);
  }
  pthread_sigmask(SIG_BLOCK, &taken, nullptr);
  mFd.reset(signalfd(-1, &taken, SFD_CLOEXEC | SFD_NONBLOCK));
}

int Signals::next() {
  signalfd_siginfo information = {};
  ssize_t size = 0;
  do {
    size = read(mFd.get(), &information, sizeof information);
  } while (size < 0 && errno == EINTR);
  return size == static_cast<ssize_t>(sizeof information) ? static_cast<int>(information.ssi_signo)
                                                          : 0;
}

}  // namespace orbctl
