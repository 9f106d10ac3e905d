// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "orbsim/Frame.h"
#include "orbsim/TraceMessage.h"

namespace orbsim {

// An event of a relayed connection, in the order in which the relay saw it. A plain value.
struct RecordedEvent {
  enum class Kind {
    kOpen,   // an application connected
    kBytes,  // these bytes came in this direction
    kEnd,    // no more data comes in this direction
    kClosed  // the connection is over
  };

  std::chrono::microseconds time{0};  // since the start of the recording
  uint32_t connection = 0;            // counted from 1
  Kind kind = Kind::kOpen;
  Direction direction = Direction::kToDaemon;
  Blob bytes;
  int process = 0;  // of kOpen; 0 if the process has no number here
};
using RecordSink = std::function<void(const RecordedEvent&)>;

// Writes a recording as JSON Lines; docs/man/orbd-sim.1 describes the keys. When write() returns,
// the line is passed to the system, so a killed relay loses nothing. Used by one thread.
class RecordingWriter {
 public:
  // Creates or empties the file. False with error().
  bool open(const std::string& path);
  // Nothing is written after a failure, because a recording with a gap would be wrong.
  void write(const RecordedEvent& event);
  // Empty if there was no error.
  const std::string& error() const { return mError; }

 private:
  struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  void writeLine(const std::string& line);

  std::unique_ptr<std::FILE, Closer> mFile;
  std::string mPath;
  std::string mError;
};

// Reads a whole recording. A cut-off last line, as from a killed relay, is ignored. False with the
// reason and the line number if it is not a recording.
bool readRecording(const std::string& path, std::vector<RecordedEvent>& events, std::string& error);

}  // namespace orbsim
