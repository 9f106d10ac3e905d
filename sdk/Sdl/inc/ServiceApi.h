// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <memory>

#include "Guarded.h"
#include "Service.h"

// The exported functions' common shape: one call of the service object, within guarded(), and the
// result that the function's generation has for it. Application threads; nothing is kept.
namespace serviceApi {

inline int enable(const ServiceTable& table, SdkBase::StatusCallback cb) {
  return guarded([&] { return Service::enable(table, cb) ? 1 : 0; }, 0);
}

inline int disable(const ServiceTable& table) {
  return guarded([&] { return Service::disable(table) ? 1 : 0; }, 0);
}

inline int create(const ServiceTable& table, SdkBase::StatusV2Callback cb) {
  return guarded([&] { return Service::create(table, cb) ? 0 : -1; }, -1);
}

inline int destroy(const ServiceTable& table) {
  return guarded([&] { return Service::destroy(table) ? 0 : -1; }, -1);
}

// A request: refused without a service and then, with nothing logged, for its arguments.
template <class S, class Call>
int64_t request(const RequestPoints& points, bool valid, const Call& call) {
  return guarded(
      [&]() -> int64_t {
        const std::shared_ptr<S> object = Service::ready<S>(S::kTable, points);
        if (!object) return kNoService;
        return valid ? call(*object) : kInvalidArguments;
      },
      kNoService);
}

}  // namespace serviceApi
