// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "RunProcess.h"

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>

namespace orbsim {
namespace {

// No other code here uses this signal.
constexpr int kAskToEnd = SIGALRM;
constexpr time_t kPatience = 10;   // seconds to wait after SIGTERM
constexpr int kStatusUnknown = 1;  // if another wait() took the status of the command

sigset_t endingSignals() {
  sigset_t set;
  sigemptyset(&set);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&set, signal);
  return set;
}

sigset_t heldSignals() {
  sigset_t set = endingSignals();
  sigaddset(&set, SIGCHLD);
  sigaddset(&set, kAskToEnd);
  return set;
}

std::vector<char*> pointers(const std::vector<std::string>& words) {
  std::vector<char*> all;
  for (const std::string& word : words) all.push_back(const_cast<char*>(word.c_str()));
  all.push_back(nullptr);
  return all;
}

int statusOf(int status) {
  return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace

void RunProcess::prepare() {
  const sigset_t held = heldSignals();
  pthread_sigmask(SIG_BLOCK, &held, nullptr);
  signal(SIGPIPE, SIG_IGN);
  // If SIGCHLD were ignored, children would leave no status and the wait would not end.
  signal(SIGCHLD, SIG_DFL);
}

int RunProcess::start(const std::vector<std::string>& command,
                      const std::vector<std::string>& environment, bool sheltered) {
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t blocked;
  sigemptyset(&blocked);
  if (sheltered) blocked = endingSignals();
  sigset_t defaults;
  sigemptyset(&defaults);
  sigaddset(&defaults, SIGPIPE);
  posix_spawnattr_setsigmask(&attributes, &blocked);
  posix_spawnattr_setsigdefault(&attributes, &defaults);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  const int error = posix_spawnp(&mChild, command.front().c_str(), nullptr, &attributes,
                                 pointers(command).data(), pointers(environment).data());
  posix_spawnattr_destroy(&attributes);
  if (error == 0) return 0;
  mChild = -1;
  errno = error;
  return error == ENOENT ? 127 : 126;
}

int RunProcess::wait(const std::function<void(int signal)>& pass) {
  const sigset_t held = heldSignals();
  bool asked = false;
  bool passed = false;
  timespec patience = {kPatience, 0};
  for (;;) {
    int status = 0;
    const pid_t ended = ::waitpid(mChild, &status, WNOHANG);
    if (ended == mChild) {
      if (asked && WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM) return 0;
      return statusOf(status);
    }
    if (ended < 0 && errno == ECHILD) return kStatusUnknown;
    siginfo_t information = {};
    const int signal =
        asked ? ::sigtimedwait(&held, &information, &patience) : ::sigwaitinfo(&held, &information);
    if (signal < 0 && errno == EAGAIN) kill(SIGKILL);
    if (signal < 0 || signal == SIGCHLD) continue;
    if (signal == kAskToEnd) {
      asked = true;
      pass(SIGTERM);
      continue;
    }
    if (passed) {
      kill(SIGKILL);
      mCutShort = true;
      return 128 + signal;
    }
    passed = true;
    // The terminal has also sent the signal to the child.
    if (information.si_code != SI_KERNEL) pass(signal);
  }
}

void RunProcess::askToEnd() { ::kill(::getpid(), kAskToEnd); }

void RunProcess::kill(int signal) const {
  if (mChild > 0) ::kill(mChild, signal);
}

}  // namespace orbsim
