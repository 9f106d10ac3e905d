// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "orbsim/Frame.h"
#include "orbsim/TraceMessage.h"

namespace orbsim {

// One thing that was said on a connection: a record of the handshake, a frame, or bytes that are
// neither. A plain value.
struct TraceItem {
  enum class Kind { kHandshake, kFrame, kBytes };

  std::chrono::system_clock::time_point time;
  Direction direction = Direction::kToDaemon;
  uint32_t connection = 0;
  int process = 0;        // the client's; 0 where it has no number on this side
  uint64_t endpoint = 0;  // the client's; 0 until it has said it
  uint64_t session = 0;   // as this record or frame says; of bytes, as the handshake said
  Kind kind = Kind::kBytes;
  const char* step = "";            // of a handshake record: init, response, complete
  Header header;                    // of a frame
  std::optional<uint32_t> sdkType;  // of a frame that carries a service's blob
  TraceMessage message;             // of a service that is known
  // Of what cannot be decoded: why, the bytes, and how many there were if those were not kept.
  std::string reason;
  Blob bytes;
  uint64_t size = 0;
};

using TraceSink = std::function<void(const TraceItem&)>;

// Cuts copies of what passes on one connection into records and frames, in whatever pieces they
// come, and tells each to its sink. Nothing that comes puts it out: what it cannot decode it tells
// as bytes. Used by any thread. `mLock` guards the rest; the sink runs without it, one item after
// another in the order of taking, on the thread of one of those who tell.
class Tracer {
 public:
  // A longer frame is told without its payload.
  static constexpr uint64_t kMaxPayload = uint64_t{1} << 20;

  Tracer(uint32_t connection, int process, TraceSink sink);

  // Takes what passed and tells what it makes.
  void feed(Direction direction, const uint8_t* data, size_t size) {
    take(direction, data, size);
    tell();
  }
  // The same in two steps, for who has to take under a lock that the sink must not meet.
  void take(Direction direction, const uint8_t* data, size_t size);
  void tell();
  // What follows are frames, also where the handshake did not come by.
  void skipHandshake();
  // Nothing follows in that direction: tells what is left over.
  void end(Direction direction);

 private:
  struct Stream {
    Blob bytes;           // not told yet
    uint64_t toSkip = 0;  // of a payload that is too long
    int records = 0;      // of the handshake, told
  };

  bool takeOne(Direction direction, Stream& stream);
  bool takeRecord(Direction direction, Stream& stream);
  bool takeFrame(Direction direction, Stream& stream);
  void skip(Stream& stream);
  TraceItem item(Direction direction, TraceItem::Kind kind) const;
  Stream& stream(Direction direction) { return mStreams[direction == Direction::kToClient]; }

  const uint32_t mConnection;
  const int mProcess;
  const TraceSink mSink;

  std::mutex mLock;
  Stream mStreams[2];
  uint64_t mEndpoint = 0;
  uint64_t mSession = 0;
  std::vector<TraceItem> mItems;  // to be told
  bool mTelling = false;          // by some thread
};

// An item as one line of text, or as one JSON object in a line; docs/man/orbd-sim.1 names the keys.
// Nothing in them can move a terminal's cursor.
std::string traceText(const TraceItem& item);
std::string traceJson(const TraceItem& item);
// A line of the log in the same two forms.
std::string logText(std::chrono::system_clock::time_point time, const std::string& line);
std::string logJson(std::chrono::system_clock::time_point time, const std::string& line);

// The number of the process behind a connected socket, 0 where it has none on this side.
int processBehind(int fd);
// "pid 4711", or that there is no number.
std::string processText(int process);
std::string hexText(const uint8_t* data, size_t size);

}  // namespace orbsim
