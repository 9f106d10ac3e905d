// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <ostream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace servicetest {

// One call of an application's callback: which one, the number it got first, and the record with
// the rest, all zero where there is none. S describes the service, see ServiceFixture.h.
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

// The C callbacks have no user data, so what they get is kept per process and service. Never
// destroyed: a thread of the library may still call while the process exits. mMutex guards all.
template <class S>
class CallLog {
 public:
  using List = std::vector<Call<S>>;

  static CallLog& get() {
    static CallLog* const log = new CallLog;
    return *log;
  }
  void add(Call<S> call) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mCalls.push_back(std::move(call));
    mChanged.notify_all();
  }
  void clear() {
    const std::lock_guard<std::mutex> lock(mMutex);
    mCalls.clear();
  }
  List calls() {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mCalls;
  }
  // Waits for at least @p count calls and returns all there are.
  List waitFor(size_t count, std::chrono::seconds timeout = std::chrono::seconds(10)) {
    std::unique_lock<std::mutex> lock(mMutex);
    mChanged.wait_until(lock, std::chrono::system_clock::now() + timeout,
                        [&] { return mCalls.size() >= count; });
    return mCalls;
  }

 private:
  std::mutex mMutex;
  std::condition_variable mChanged;
  List mCalls;
};

}  // namespace servicetest
