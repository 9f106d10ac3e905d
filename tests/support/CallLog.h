// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <ostream>
#include <string>
#include <tuple>

#include "Recorder.h"

namespace servicetest {

// One call of an application's callback: its name, its first argument, and its record, which is all
// zero if the callback gets none. S describes the service, see ServiceFixture.h.
template <class S>
struct Call {
  std::string callback;
  int status;
  typename S::Record record;
};

template <class S>
bool operator==(const Call<S>& a, const Call<S>& b) {
  return a.callback == b.callback && a.status == b.status &&
         S::values(a.record) == S::values(b.record);
}

template <class S>
std::ostream& operator<<(std::ostream& out, const Call<S>& call) {
  out << call.callback << '(' << call.status << ", {";
  std::apply([&](const auto&... value) { ((out << ' ' << value), ...); }, S::values(call.record));
  return out << " })";
}

template <class S>
using CallLog = Recorder<Call<S>>;

}  // namespace servicetest
