// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <cstdint>
#include <optional>
#include <utility>

namespace orbsim {

// A model together with the last estimate it gave. Owned and used by one thread.
template <typename Model>
class Estimator {
 public:
  using Estimate = decltype(std::declval<Model>().next());

  explicit Estimator(uint64_t seed) : mModel(seed) {}

  const Estimate& next() {
    mLast = mModel.next();
    return *mLast;
  }
  // While periodic reports are running the last one sent is the last one there is; otherwise
  // whoever asks gets a new one.
  const Estimate& latest(bool reportsAreRunning) {
    return reportsAreRunning && mLast ? *mLast : next();
  }

 private:
  Model mModel;
  std::optional<Estimate> mLast;
};

}  // namespace orbsim
