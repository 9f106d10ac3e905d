// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// The calls that can be made to fail, the failures, and what is recorded about them.
namespace failcalls {

enum class Call : unsigned {
  Socket,
  Connect,
  Send,
  Recv,
  Shutdown,
  Close,
  Eventfd,
  EpollCreate1,
  EpollCtl,
  EpollWait,
  Read,
  Write,
  ClockGettime,
  PthreadCreate,
  Malloc,
  Calloc,
  OperatorNew,
  Open,
  Dlopen,
  Fdopendir,
  Stat,
  Unlink,
  kCount,
};
constexpr size_t kCalls = static_cast<size_t>(Call::kCount);
const char* nameOf(Call call);

// How a call fails.
enum class Kind {
  Error,      // not made, errno has the reason
  DoneError,  // made, but it returns an error: as close() does when a signal interrupts it
  One,        // made for one byte
  Half,       // made for the first half
  End,        // returns 0, as at the end of the data
};

struct Failure {
  const char* name;
  Kind kind;
  int error;
};
// All failures that are possible for a call.
const std::vector<Failure>& failuresOf(Call call);

// One fault: the failure of the nth call, counted from 1, and with `lasting` of all that follow.
struct Fault {
  Call call = Call::kCount;
  Failure failure = {};
  unsigned nth = 0;
  bool lasting = false;

  std::string text() const;
};

// Return addresses in the library, innermost first.
struct Stack {
  static constexpr size_t kMost = 24;
  unsigned depth;
  uintptr_t frames[kMost];
};

// What the fault did. It is in memory that the run shares with the driver, so it remains however
// the run ends.
struct Probe {
  std::atomic<unsigned> reached[kCalls];
  std::atomic<unsigned> injected;
  Stack stack;  // of the first failing call
};

}  // namespace failcalls
