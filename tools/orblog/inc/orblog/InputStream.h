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

// An encrypted log from standard input, which can be read only once. It is read in pieces when
// lines are requested. Used by one thread; the other objects must live longer.
class InputStream {
 public:
  // `beforeWaiting` is called when no data is available.
  InputStream(const PrivateKey& key, KeyRing& ring, KeyFinder& finder, Console& console,
              std::function<void()> beforeWaiting);
  // The next records; none at the end. Faults are reported.
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

// The name of standard input in messages and in JSON.
extern const char kInputName[];

}  // namespace orblog
