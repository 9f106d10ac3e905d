// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// What can be made to fail, and what is noted about it.
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
  Error,      // not made, errno says why
  DoneError,  // made, and errno says that it was not: what close() does when it is interrupted
  One,        // made for one byte
  Half,       // made for the first half
  End,        // nothing comes any more
};

struct Failure {
  const char* name;
  Kind kind;
  int error;
};
// All failures that make sense for a call.
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

// What came of it; lies in memory that the run shares with the driver, so that it survives any end.
struct Probe {
  std::atomic<unsigned> reached[kCalls];
  std::atomic<unsigned> injected;
  Stack stack;  // of the first failing call
};

}  // namespace failcalls
