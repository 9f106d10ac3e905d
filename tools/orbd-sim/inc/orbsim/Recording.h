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

// What happened on a relayed connection, in the order in which the relay saw it. A plain value.
struct RecordedEvent {
  enum class Kind {
    kOpen,   // an application has connected
    kBytes,  // these bytes came in this direction
    kEnd,    // nothing more comes in this direction
    kClosed  // the connection is over
  };

  std::chrono::microseconds time{0};  // since the recording began
  uint32_t connection = 0;            // counted from 1
  Kind kind = Kind::kOpen;
  Direction direction = Direction::kToDaemon;
  Blob bytes;
  int process = 0;  // of kOpen; 0 where it has no number on this side
};
using RecordSink = std::function<void(const RecordedEvent&)>;

// Writes a recording as JSON Lines; docs/man/orbd-sim.1 tells the keys. Each line is on its way to
// the file when write() returns, so that a killed relay leaves all it saw. Used by one thread.
class RecordingWriter {
 public:
  // Makes the file or empties it. False with error().
  bool open(const std::string& path);
  // After a failure nothing more is written: a recording with a gap would be a wrong one.
  void write(const RecordedEvent& event);
  // Empty while all is well.
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

// Reads a whole recording. A last line that is cut off, as a killed relay may leave it, is not
// counted. False with the reason and its line when it is none.
bool readRecording(const std::string& path, std::vector<RecordedEvent>& events, std::string& error);

}  // namespace orbsim
