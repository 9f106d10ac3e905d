// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "Program.h"

#include <signal.h>

#include <atomic>
#include <cerrno>
#include <cstdio>

namespace orbsim {
namespace {

sigset_t endingSignals() {
  sigset_t ending;
  sigemptyset(&ending);
  sigaddset(&ending, SIGINT);
  sigaddset(&ending, SIGTERM);
  return ending;
}

void print(std::string line) {
  static std::atomic<bool> readerIsGone{false};
  if (readerIsGone.load()) return;
  line += '\n';
  const size_t written = std::fwrite(line.data(), 1, line.size(), stdout);
  if ((written < line.size() || std::fflush(stdout) != 0) && errno == EPIPE) {
    // Which is no failure: nobody misses the rest.
    readerIsGone.store(true);
    std::clearerr(stdout);
  }
}

}  // namespace

void holdSignals() {
  const sigset_t ending = endingSignals();
  pthread_sigmask(SIG_BLOCK, &ending, nullptr);
  signal(SIGPIPE, SIG_IGN);
}

void waitForEnd() {
  const sigset_t ending = endingSignals();
  int signal = 0;
  while (sigwait(&ending, &signal) != 0) {
  }
}

std::function<void(const std::string&)> Output::log() const {
  return [json = mJson](const std::string& line) {
    const auto now = std::chrono::system_clock::now();
    print(json ? logJson(now, line) : logText(now, line));
  };
}

TraceSink Output::trace() const {
  return [json = mJson](const TraceItem& item) { print(json ? traceJson(item) : traceText(item)); };
}

}  // namespace orbsim
