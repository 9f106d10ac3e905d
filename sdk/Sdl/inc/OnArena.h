// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <google/protobuf/arena.h>

#include <cstddef>

// A message of a service, allocated on an arena. The library makes and reads all messages this way.
// Without an arena, a message notes which member its oneof has before it allocates the member. If
// that allocation fails, its destructor deletes a pointer that was never set. On an arena nothing
// deletes a member, so a replaced member stays until the end, too. A local variable of one
// function, on any thread; no lock.
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
