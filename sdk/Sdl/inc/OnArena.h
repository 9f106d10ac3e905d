// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <google/protobuf/arena.h>

#include <cstddef>

// A message of a service, on an arena: each one that the library makes or reads is such. A message
// of its own says which member its oneof has before it asks for that member's memory: where there
// is none, its destructor deletes what the pointer held before, or what was never set. On an arena
// nothing deletes a member, so one that was displaced by the next stays until the end, too.
// Belongs to the function whose local variable it is, on any thread; no lock.
template <class Message>
class OnArena {
 public:
  OnArena() = default;
  OnArena(const OnArena&) = delete;
  OnArena& operator=(const OnArena&) = delete;

  Message& operator*() { return *mMessage; }
  Message* operator->() { return mMessage; }

 private:
  // Room for the longest request, and for an answer whose text is short. It is on the stack.
  static constexpr size_t kFirstBlock = 512;

  alignas(std::max_align_t) char mFirstBlock[kFirstBlock];  // left unset: the arena fills it
  google::protobuf::Arena mArena{mFirstBlock, kFirstBlock};
  Message* const mMessage = google::protobuf::Arena::CreateMessage<Message>(&mArena);
};
