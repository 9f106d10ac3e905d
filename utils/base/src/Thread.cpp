// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "Thread.h"

#include <android/log.h>
#include <pthread.h>
#include <signal.h>

#include <atomic>
#include <exception>
#include <string>
#include <utility>

namespace {

// Signals that tell a thread about its own fault must stay deliverable.
constexpr int kUnblocked[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT, SIGSYS};
std::atomic<bool> userSignalTaken{false};
thread_local bool tStartedHere = false;

class BlockedSignals {
 public:
  BlockedSignals() {
    sigset_t blocked;
    sigfillset(&blocked);
    for (const int signal : kUnblocked) sigdelset(&blocked, signal);
    if (userSignalTaken) sigdelset(&blocked, SIGUSR1);
    pthread_sigmask(SIG_SETMASK, &blocked, &mBefore);
  }
  ~BlockedSignals() { pthread_sigmask(SIG_SETMASK, &mBefore, nullptr); }
  BlockedSignals(const BlockedSignals&) = delete;
  BlockedSignals& operator=(const BlockedSignals&) = delete;

 private:
  sigset_t mBefore;
};

void runBody(const std::string& name, const std::function<void()>& body) noexcept {
  tStartedHere = true;
  pthread_setname_np(pthread_self(), name.c_str());
  try {
    body();
  } catch (const std::exception& error) {
    __android_log_print(ANDROID_LOG_ERROR, nullptr, "thread %s ended: %s", name.c_str(),
                        error.what());
  } catch (...) {
    __android_log_print(ANDROID_LOG_ERROR, nullptr, "thread %s ended by an exception",
                        name.c_str());
  }
}

}  // namespace

bool isLibraryThread() { return tStartedHere; }

void letThreadsTakeUserSignal() { userSignalTaken = true; }

bool orb::utils::startThreadWith(std::thread& out, const char* name, std::function<void()> body) {
  const BlockedSignals inherited;  // the new thread starts with the mask of its creator
  try {
    std::string shortName = std::string(name).substr(0, 15);
    out = std::thread([shortName = std::move(shortName), body = std::move(body)]() mutable {
      runBody(shortName, body);
      body = nullptr;  // what the thread shared goes with the thread, not with its handle
    });
  } catch (const std::exception&) {
    return false;
  }
  return true;
}
