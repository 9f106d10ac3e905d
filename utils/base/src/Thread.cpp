// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "Thread.h"

#include <pthread.h>
#include <signal.h>

#include <atomic>
#include <exception>
#include <memory>
#include <string>
#include <utility>

#include "PlatformLog.h"

namespace {

// Signals that tell a thread about its own fault must stay deliverable.
constexpr int kUnblocked[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT, SIGSYS};
std::atomic<bool> userSignalTaken{false};
constexpr std::size_t kNameSize = 15;  // what the kernel keeps
thread_local bool tStartedHere = false;

// While it exists, the calling thread blocks the signals that a thread of the library blocks. No
// lock.
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
    PLATFORM_LOG(ERROR, "thread %s ended: %s", name.c_str(), error.what());
  } catch (...) {
    PLATFORM_LOG(ERROR, "thread %s ended by an exception", name.c_str());
  }
}

// What a thread needs for its start. It belongs to the new thread.
struct Start {
  std::string name;
  std::function<void()> body;
};

// Attributes of a thread with a stack for @p work.
class Attributes {
 public:
  explicit Attributes(ThreadWork work) : mMade(pthread_attr_init(&mValue) == 0) {
    mUsable = mMade && orb::utils::setStackSize(mValue, work);
  }
  ~Attributes() {
    if (mMade) pthread_attr_destroy(&mValue);
  }
  Attributes(const Attributes&) = delete;
  Attributes& operator=(const Attributes&) = delete;

  // Null when there are none.
  const pthread_attr_t* get() const { return mUsable ? &mValue : nullptr; }

 private:
  pthread_attr_t mValue;
  bool mMade;
  bool mUsable;
};

// The thread itself releases what it shared, not its handle.
extern "C" void* orbThreadMain(void* data) {
  const std::unique_ptr<Start> start(static_cast<Start*>(data));
  runBody(start->name, start->body);
  return nullptr;
}

}  // namespace

Thread::~Thread() {
  if (mJoinable) std::terminate();
}

Thread& Thread::operator=(Thread&& other) noexcept {
  if (mJoinable) std::terminate();
  swap(other);
  return *this;
}

void Thread::join() {
  pthread_join(mId, nullptr);
  mJoinable = false;
}

void Thread::detach() {
  pthread_detach(mId);
  mJoinable = false;
}

bool isLibraryThread() { return tStartedHere; }

void letThreadsTakeUserSignal() { userSignalTaken = true; }

bool Thread::start(const char* name, ThreadWork work, std::function<void()> body) {
  if (mJoinable) std::terminate();
  const BlockedSignals inherited;  // the new thread starts with the mask of its creator
  try {
    auto start =
        std::make_unique<Start>(Start{std::string(name).substr(0, kNameSize), std::move(body)});
    const Attributes attributes(work);
    if (attributes.get() == nullptr) return false;
    if (pthread_create(&mId, attributes.get(), orbThreadMain, start.get()) != 0) return false;
    start.release();
  } catch (const std::exception&) {
    return false;
  }
  mJoinable = true;
  return true;
}
