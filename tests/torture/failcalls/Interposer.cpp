// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// Finds out who makes a call, and whether this call fails.
#include "Interposer.h"

#include <link.h>
#include <unwind.h>

#include <cstring>

namespace failcalls {

namespace {

struct Module {
  uintptr_t base = 0;
  uintptr_t begin = 0;
  uintptr_t end = 0;
  const char* file = "";
  bool contains(uintptr_t address) const { return address >= begin && address < end; }
};

struct Modules {
  Module library;
  Module program;
};

int addModule(dl_phdr_info* info, size_t, void* data) {
  auto& modules = *static_cast<Modules*>(data);
  Module module;
  module.base = info->dlpi_addr;
  module.begin = UINTPTR_MAX;
  module.file = info->dlpi_name;
  for (size_t i = 0; i < info->dlpi_phnum; ++i) {
    const auto& header = info->dlpi_phdr[i];
    if (header.p_type != PT_LOAD) continue;
    const uintptr_t begin = info->dlpi_addr + header.p_vaddr;
    if (begin < module.begin) module.begin = begin;
    if (begin + header.p_memsz > module.end) module.end = begin + header.p_memsz;
  }
  if (module.contains(reinterpret_cast<uintptr_t>(&addModule))) modules.program = module;
  if (std::strstr(info->dlpi_name, "libOrbSdlSdk.so") != nullptr) modules.library = module;
  return 0;
}

// Both stay at their addresses until the process ends.
const Modules& modules() {
  static const Modules found = [] {
    Modules all;
    dl_iterate_phdr(addModule, &all);
    return all;
  }();
  return found;
}

// The state of the current run. Set while there is one thread, read by all.
std::atomic<bool> armed{false};
Fault fault;
Probe* probe = nullptr;

thread_local bool inside = false;  // this thread examines a call: calls made for that do not count

// Goes from the caller outwards. The nearest frame of the library or of the program decides whose
// call it is. A callback of the application runs above the library's frames; a container of the
// library runs above the runtime's.
struct Walk {
  uintptr_t caller;
  bool reached = false;
  bool found = false;
};

_Unwind_Reason_Code step(_Unwind_Context* context, void* data) {
  auto& walk = *static_cast<Walk*>(data);
  const uintptr_t address = _Unwind_GetIP(context);
  walk.reached = walk.reached || address == walk.caller;
  if (!walk.reached) return _URC_NO_REASON;  // our own frames
  if (modules().program.contains(address)) return _URC_END_OF_STACK;
  if (!modules().library.contains(address)) return _URC_NO_REASON;
  walk.found = true;
  return _URC_END_OF_STACK;
}

bool isLibrarys(uintptr_t caller, bool through) {
  if (modules().library.contains(caller)) return true;
  if (!through || modules().program.contains(caller)) return false;
  Walk walk{caller};
  _Unwind_Backtrace(step, &walk);
  return walk.found;
}

_Unwind_Reason_Code noteFrame(_Unwind_Context* context, void* data) {
  auto& stack = *static_cast<Stack*>(data);
  const uintptr_t address = _Unwind_GetIP(context);
  if (modules().library.contains(address)) stack.frames[stack.depth++] = address;
  return stack.depth < Stack::kMost ? _URC_NO_REASON : _URC_END_OF_STACK;
}

// An eventfd takes its eight bytes or nothing.
bool impossible(const Failure& failure, size_t size) {
  const bool cuts = failure.kind == Kind::One || failure.kind == Kind::Half;
  return cuts && size <= sizeof(uint64_t);
}

const Failure* judge(Call call, uintptr_t caller, bool through, size_t size) {
  if (!isLibrarys(caller, through)) return nullptr;
  const unsigned count = ++probe->reached[static_cast<size_t>(call)];
  if (call != fault.call || count < fault.nth) return nullptr;
  if (count > fault.nth && !fault.lasting) return nullptr;
  if (impossible(fault.failure, size)) return nullptr;
  if (probe->injected++ == 0) note(probe->stack);
  return &fault.failure;
}

}  // namespace

void arm(const Fault& wanted, Probe& to) {
  fault = wanted;
  probe = &to;
  (void)modules();
  armed = true;
}

void disarm() { armed = false; }

const Failure* decide(Call call, const void* caller, bool through, size_t size) {
  if (!armed || inside) return nullptr;
  inside = true;
  const Failure* const failure = judge(call, reinterpret_cast<uintptr_t>(caller), through, size);
  inside = false;
  return failure;
}

void note(Stack& stack) {
  stack.depth = 0;
  _Unwind_Backtrace(noteFrame, &stack);
}

bool inLibrary(uintptr_t address) { return modules().library.contains(address); }

const char* libraryFile() { return modules().library.file; }

uintptr_t libraryOffset(uintptr_t address) { return address - modules().library.base; }

}  // namespace failcalls
