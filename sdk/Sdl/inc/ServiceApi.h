// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <memory>

#include "Guarded.h"
#include "Service.h"

// The exported functions' common shape: one call of the service object, within guarded(), and the
// result that the function's generation has for it. Application threads; nothing is kept.
namespace serviceApi {

// Refused in a process that was forked from the one that uses the library. Takes no lock there:
// another thread may have held it at the fork.
template <class Call, class Result>
Result inOwnProcess(const ServiceTable& table, const char* function, const Call& call,
                    Result failed) {
  return guarded(
      [&] {
        if (!Service::mUsedIn.isElsewhere()) return call();
        LogPoint{function, __LINE__, "refused in a forked process"}.print(table.source);
        return failed;
      },
      failed);
}

inline int enable(const ServiceTable& table, SdkBase::StatusCallback cb) {
  return inOwnProcess(
      table, table.enable.entry.function, [&] { return Service::enable(table, cb) ? 1 : 0; }, 0);
}

inline int disable(const ServiceTable& table) {
  return inOwnProcess(
      table, table.disable.entry.function, [&] { return Service::disable(table) ? 1 : 0; }, 0);
}

inline int create(const ServiceTable& table, SdkBase::StatusV2Callback cb) {
  return inOwnProcess(
      table, table.create.entry.function, [&] { return Service::create(table, cb) ? 0 : -1; }, -1);
}

inline int destroy(const ServiceTable& table) {
  return inOwnProcess(
      table, table.destroy.entry.function, [&] { return Service::destroy(table) ? 0 : -1; }, -1);
}

// A request: refused without a service and then, with nothing logged, for its arguments.
template <class S, class Call>
int64_t request(const RequestPoints& points, bool valid, const Call& call) {
  return inOwnProcess(
      S::kTable, points.noInstance.function,
      [&]() -> int64_t {
        const std::shared_ptr<S> object = Service::ready<S>(S::kTable, points);
        if (!object) return kNoService;
        return valid ? call(*object) : kInvalidArguments;
      },
      kNoService);
}

}  // namespace serviceApi
