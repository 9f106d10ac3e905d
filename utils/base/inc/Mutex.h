// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <shared_mutex>
#include <utility>

// Mutexes and locks that clang checks at compile time (-Wthread-safety): a field with
// ORB_GUARDED_BY is accessible only while its lock is held, and a function with ORB_REQUIRES can be
// called only while the lock is held. Other compilers check nothing.
#if defined(__clang__)
#define ORB_THREAD_ATTRIBUTE(x) __attribute__((x))
#else
#define ORB_THREAD_ATTRIBUTE(x)
#endif
#define ORB_CAPABILITY(name) ORB_THREAD_ATTRIBUTE(capability(name))
#define ORB_SCOPED_CAPABILITY ORB_THREAD_ATTRIBUTE(scoped_lockable)
#define ORB_GUARDED_BY(lock) ORB_THREAD_ATTRIBUTE(guarded_by(lock))
#define ORB_REQUIRES(...) ORB_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))
#define ORB_ACQUIRE(...) ORB_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define ORB_RELEASE(...) ORB_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))
#define ORB_TRY_ACQUIRE(...) ORB_THREAD_ATTRIBUTE(try_acquire_capability(__VA_ARGS__))

template <class M>
class ORB_CAPABILITY("mutex") CheckedMutex {
 public:
  void lock() ORB_ACQUIRE() { mMutex.lock(); }
  void unlock() ORB_RELEASE() { mMutex.unlock(); }
  bool try_lock() ORB_TRY_ACQUIRE(true) { return mMutex.try_lock(); }

 private:
  friend class UniqueLock;
  M mMutex;
};

using Mutex = CheckedMutex<std::mutex>;
using SharedMutex = CheckedMutex<std::shared_mutex>;

// Locked until the end of its scope.
template <class M>
class ORB_SCOPED_CAPABILITY ScopedLock {
 public:
  explicit ScopedLock(M& mutex) ORB_ACQUIRE(mutex) : mMutex(mutex) { mutex.lock(); }
  ScopedLock(const ScopedLock&) = delete;
  ScopedLock& operator=(const ScopedLock&) = delete;
  ~ScopedLock() ORB_RELEASE() { mMutex.unlock(); }

 private:
  M& mMutex;
};

using LockGuard = ScopedLock<Mutex>;

// Can be unlocked and locked again within its scope, and a condition can wait with it.
class ORB_SCOPED_CAPABILITY UniqueLock {
 public:
  explicit UniqueLock(Mutex& mutex) ORB_ACQUIRE(mutex) : mLock(mutex.mMutex) {}
  UniqueLock(const UniqueLock&) = delete;
  UniqueLock& operator=(const UniqueLock&) = delete;
  ~UniqueLock() ORB_RELEASE() {}

  void lock() ORB_ACQUIRE() { mLock.lock(); }
  void unlock() ORB_RELEASE() { mLock.unlock(); }

 private:
  friend class Condition;
  std::unique_lock<std::mutex> mLock;
};

// A condition variable for UniqueLock. A predicate that reads guarded fields says ORB_REQUIRES of
// their lock.
class Condition {
 public:
  void notify_one() { mCondition.notify_one(); }
  void notify_all() { mCondition.notify_all(); }
  template <class Predicate>
  void wait(UniqueLock& lock, Predicate predicate) {
    mCondition.wait(lock.mLock, std::move(predicate));
  }
  template <class Duration, class Predicate>
  bool wait_for(UniqueLock& lock, const Duration& timeout, Predicate predicate) {
    return mCondition.wait_for(lock.mLock, timeout, std::move(predicate));
  }
  template <class TimePoint>
  std::cv_status wait_until(UniqueLock& lock, const TimePoint& deadline) {
    return mCondition.wait_until(lock.mLock, deadline);
  }

 private:
  std::condition_variable mCondition;
};
