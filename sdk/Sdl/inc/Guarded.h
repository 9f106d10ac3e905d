// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

// No exception leaves an exported function: for want of memory the call is refused with @p failed.
template <class Call, class Result>
Result guarded(const Call& call, Result failed) noexcept {
  try {
    return call();
  } catch (...) {
    return failed;
  }
}
