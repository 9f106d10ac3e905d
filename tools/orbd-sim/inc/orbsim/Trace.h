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

// One item of a connection: a handshake record, a frame, or other bytes. A plain value.
struct TraceItem {
  enum class Kind { kHandshake, kFrame, kBytes };

  std::chrono::system_clock::time_point time;
  Direction direction = Direction::kToDaemon;
  uint32_t connection = 0;
  int process = 0;        // of the client; 0 if the process has no number here
  uint64_t endpoint = 0;  // of the client; 0 until it is known
  uint64_t session = 0;   // from this record or frame; for bytes from the handshake
  Kind kind = Kind::kBytes;
  const char* step = "";            // for a handshake record: init, response, complete
  Header header;                    // for a frame
  std::optional<uint32_t> sdkType;  // for a frame with a service's blob
  TraceMessage message;             // for a known service
  // For data that cannot be decoded: the reason, the bytes, and their number if they are not kept.
  std::string reason;
  Blob bytes;
  uint64_t size = 0;
};

using TraceSink = std::function<void(const TraceItem&)>;

// Splits the traffic of one connection into records and frames and passes each to its sink. The
// data may come in any pieces. Data that it cannot decode is passed as bytes. Used by any thread.
// `mLock` guards the rest; the sink runs without it, on the thread of one of the callers, one item
// after the other in the order of take().
class Tracer {
 public:
  // For a longer frame the payload is not traced.
  static constexpr uint64_t kMaxPayload = uint64_t{1} << 20;

  Tracer(uint32_t connection, int process, TraceSink sink);

  // Adds data and passes the resulting items to the sink.
  void feed(Direction direction, const uint8_t* data, size_t size) {
    take(direction, data, size);
    tell();
  }
  // The same in two steps, for a caller that must add data while it holds a lock that the sink may
  // need.
  void take(Direction direction, const uint8_t* data, size_t size);
  void tell();
  // The following data are frames, even if no handshake was seen.
  void skipHandshake();
  // No more data in that direction: passes the remaining bytes to the sink.
  void end(Direction direction);

 private:
  struct Stream {
    Blob bytes;           // not passed yet
    uint64_t toSkip = 0;  // remaining bytes of a payload that is too long
    int records = 0;      // number of handshake records so far
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
  std::vector<TraceItem> mItems;  // to be passed to the sink
  bool mTelling = false;          // whether a thread is passing items
};

// An item as one line of text, or as one JSON object on a line; docs/man/orbd-sim.1 describes the
// keys. They contain no characters that control a terminal.
std::string traceText(const TraceItem& item);
std::string traceJson(const TraceItem& item);
// A log line in both formats.
std::string logText(std::chrono::system_clock::time_point time, const std::string& line);
std::string logJson(std::chrono::system_clock::time_point time, const std::string& line);

// The process id of the other side of a connected socket; 0 if it has no number here.
int processBehind(int fd);
// "pid 4711", or a text without a number.
std::string processText(int process);
std::string hexText(const uint8_t* data, size_t size);

}  // namespace orbsim
