// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstddef>
#include <map>
#include <string>

// Every thread of this program gets a stack of the requested size that is filled with a pattern.
// Bytes without the pattern were used. Threads are identified by their names. The stacks are never
// freed, because a detached thread does not report its end. This does not work with a sanitizer,
// which moves variables to other places.
namespace painted {

struct Stack {
  size_t size = 0;  // the smallest requested size
  size_t used = 0;  // the maximum below the thread's first function
};

// By name, for all threads that have or had one.
std::map<std::string, Stack> stacks();

// Whether a thread of this name still runs.
bool anyRuns(const std::string& name);

// The name of the calling thread and its remaining stack; empty and 0 for a stack without the
// pattern.
std::string nameHere();
size_t leftHere();

}  // namespace painted
