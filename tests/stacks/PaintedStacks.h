// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstddef>
#include <map>
#include <string>

// Every thread of a program that has this gets a painted stack of the size that it asks for, and
// what is no longer paint was used. Threads are told apart by the names that they give themselves.
// The stacks stay for good: a detached thread does not say when it has left its own. Nothing here
// holds under a sanitizer, which moves variables elsewhere.
namespace painted {

struct Stack {
  size_t size = 0;  // as asked for, the smallest
  size_t used = 0;  // below the thread's first function, the most
};

// By name, of all threads that have had one so far, those that still run included.
std::map<std::string, Stack> stacks();

// Whether a thread of this name has not left its last function yet.
bool anyRuns(const std::string& name);

// The name of the calling thread, and the room that is left to it; empty and 0 for one whose stack
// is not painted.
std::string nameHere();
size_t leftHere();

}  // namespace painted
