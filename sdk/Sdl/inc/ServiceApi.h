// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <pthread.h>

#include <memory>
#include <new>

#include "Service.h"

// The exported functions' common shape: one call of the service object, within exportedCall(), and
// the result that the function's generation has for it. Application threads; nothing is kept.
namespace serviceApi {

// While it lives, a request to cancel the calling thread waits: a call that is cut short by one
// leaves its locks behind, or ends the process where its unwinding meets noexcept.
class NoCancellation {
 public:
  NoCancellation() { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &mBefore); }
  NoCancellation(const NoCancellation&) = delete;
  NoCancellation& operator=(const NoCancellation&) = delete;
  ~NoCancellation() { pthread_setcancelstate(mBefore, &mBefore); }

 private:
  int mBefore = PTHREAD_CANCEL_ENABLE;
};

// The body of an exported function. No exception leaves it: for want of memory the call is refused
// with @p refused. So it is in a process that was forked from the one that uses the library, before
// any lock is taken: another thread may have held it at the fork.
template <class Call, class Result>
Result exportedCall(const ServiceTable& table, const char* function, const Call& call,
                    Result refused) noexcept {
  const NoCancellation whole;
  try {
    if (!Service::mUsedIn.isElsewhere()) return call();
    LogPoint{function, __LINE__, "refused in a forked process"}.print(table.source);
  } catch (...) {
    // Refused, as below.
  }
  return refused;
}

inline int enable(const ServiceTable& table, SdkBase::StatusCallback cb) {
  return exportedCall(
      table, table.points.enable.entry.function, [&] { return Service::enable(table, cb) ? 1 : 0; },
      0);
}

inline int disable(const ServiceTable& table) {
  return exportedCall(
      table, table.points.disable.entry.function, [&] { return Service::disable(table) ? 1 : 0; },
      0);
}

inline int create(const ServiceTable& table, SdkBase::StatusV2Callback cb) {
  return exportedCall(
      table, table.points.create.entry.function,
      [&] { return Service::create(table, cb) ? 0 : -1; }, -1);
}

inline int destroy(const ServiceTable& table) {
  return exportedCall(
      table, table.points.destroy.entry.function, [&] { return Service::destroy(table) ? 0 : -1; },
      -1);
}

// A request: refused without a service and then, with nothing logged, for its arguments. The client
// is looked up once, in the call, where the request is accepted. Only a refusal asks here whether
// the client is what was missing; nothing is logged for one that was disabled during the call, nor
// for want of memory.
template <class S, class Call>
int64_t request(const RequestPoints& points, bool valid, const Call& call) {
  return exportedCall(
      S::kTable, points.noInstance.function,
      [&]() -> int64_t {
        const std::shared_ptr<S> object = Service::present<S>(S::kTable, points);
        if (!object) return kNoService;
        int64_t result = kNoService;
        try {
          result = valid ? call(*object) : kInvalidArguments;
        } catch (const std::bad_alloc&) {
          // Refused all the same, but without a client that is the reason.
        }
        if (result >= kRequestDone || !object->neverHadClient()) return result;
        points.noClient.print(S::kTable.source);
        return kNoService;
      },
      kNoService);
}

}  // namespace serviceApi
