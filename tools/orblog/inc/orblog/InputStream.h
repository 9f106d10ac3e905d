// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <functional>
#include <vector>

#include "orblog/Console.h"
#include "orblog/LogParser.h"
#include "orblog/Merge.h"
#include "orblog/PrivateKey.h"

namespace orblog {

// An encrypted log that comes through standard input and can be read only once, a piece at a time
// as its lines are asked for. Used by one thread; the others must outlive it.
class InputStream {
 public:
  // `beforeWaiting` is called when there is nothing to read at the moment.
  InputStream(const PrivateKey& key, KeyRing& ring, KeyFinder& finder, Console& console,
              std::function<void()> beforeWaiting);
  // Its next records; none at its end. What cannot be read is told on the way.
  std::vector<Record> read();

 private:
  // False at the end.
  bool readPiece(Parsed& out);
  const PrivateKey& mKey;
  const KeyRing& mRing;
  Console& mConsole;
  const std::function<void()> mBeforeWaiting;
  LogParser mParser;
  std::vector<uint8_t> mStart;
  bool mEnded = false;
};

// What standard input is called in messages and in JSON.
extern const char kInputName[];

}  // namespace orblog
