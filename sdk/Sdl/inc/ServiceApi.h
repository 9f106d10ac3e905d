// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <pthread.h>

#include <memory>
#include <new>

#include "Service.h"

// What the exported functions share: one call of the service object within exportedCall(), and the
// result of the function's generation. Runs on application threads; no state.
namespace serviceApi {

// Delays a cancellation of the calling thread until it is destroyed. A cancelled call would leave
// its locks locked, or end the process when unwinding reaches a noexcept function.
class NoCancellation {
 public:
  NoCancellation() { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &mBefore); }
  NoCancellation(const NoCancellation&) = delete;
  NoCancellation& operator=(const NoCancellation&) = delete;
  ~NoCancellation() { pthread_setcancelstate(mBefore, &mBefore); }

 private:
  int mBefore = PTHREAD_CANCEL_ENABLE;
};

// The body of an exported function. No exception leaves it: without memory, the call returns @p
// refused. In a child forked from the process that uses the library, it does so, too, and takes no
// lock before: another thread may have held it at the fork.
template <class Call, class Result>
Result exportedCall(const ServiceTable& table, const char* function, const Call& call,
                    Result refused) noexcept {
  const NoCancellation whole;
  try {
    if (!Service::mUsedIn.isElsewhere()) return call();
    SdkLog::print(ANDROID_LOG_DEBUG, table.source.tag, table.source.file, function, __LINE__,
                  "refused in a forked process");
  } catch (...) {
    // Without memory the call is refused, too.
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

// A request. It is refused if there is no service, then (without a log line) if its arguments are
// invalid. The client is looked up once, where the request is accepted. After a refusal, this
// function checks whether the client was missing. It logs nothing if the service was disabled
// during the call, or if memory ran out.
template <class S, class Call>
int64_t request(const RequestPoints& points, bool valid, const Call& call) {
  return exportedCall(
      S::kTable, points.noInstance.function,
      [&]() -> int64_t {
        const std::shared_ptr<S> object = Service::objectFor<S>(points);
        if (!object) return kNoService;
        int64_t result = kNoService;
        try {
          result = valid ? call(*object) : kInvalidArguments;
        } catch (const std::bad_alloc&) {
          // Refused. The line below is written only if there is no client.
        }
        if (result >= kRequestDone || !object->neverHadClient()) return result;
        points.noClient.print();
        return kNoService;
      },
      kNoService);
}

}  // namespace serviceApi
