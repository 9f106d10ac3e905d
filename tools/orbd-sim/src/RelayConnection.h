// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <poll.h>

#include <chrono>
#include <memory>
#include <string>

#include "orbsim/Relay.h"

namespace orbsim {

// One application's connection and the related connection to the daemon. Owned and used by the
// relay's thread; nothing here blocks.
class RelayConnection {
 public:
  using Clock = std::chrono::steady_clock;

  // Takes over the descriptor of the accepted connection.
  RelayConnection(int clientFd, uint32_t number, const RelayOptions& options,
                  Clock::time_point start);
  ~RelayConnection();
  RelayConnection(const RelayConnection&) = delete;
  RelayConnection& operator=(const RelayConnection&) = delete;

  // The descriptors to poll, for client and daemon; -1 if nothing is to be polled.
  void addTo(pollfd& client, pollfd& daemon) const;
  // Whether the connection to the daemon must be tried again, which cannot be polled for.
  bool connecting() const { return !mFinished && mDaemonFd < 0; }
  void handle(short clientEvents, short daemonEvents);
  bool finished() const { return mFinished; }

 private:
  // The data of one direction.
  struct Pipe {
    explicit Pipe(Direction way) : direction(way) {}

    const Direction direction;
    Blob pending;       // read and not written yet
    size_t offset = 0;  // number of written bytes of it
    uint64_t total = 0;
    bool ended = false;  // no more data comes
    bool done = false;   // and the end is passed on, or cannot be
  };

  static bool over(const Pipe& pipe) { return pipe.ended || pipe.done; }  // is not read any more
  int source(const Pipe& pipe) const;
  int target(const Pipe& pipe) const;
  Pipe& reverse(const Pipe& pipe) { return pipe.direction == mUp.direction ? mDown : mUp; }
  short wanted(int fd) const;
  void connectDaemon();
  void handleSide(int fd, short events);
  void read(Pipe& pipe);
  void write(Pipe& pipe);
  void passEnd(Pipe& pipe);
  void breakOff(Pipe& pipe);
  void finish(const std::string& how);
  void tell(const Pipe& pipe, const Blob& bytes);
  void record(RecordedEvent::Kind kind, Direction direction, const Blob& bytes);
  void log(const std::string& line) const;

  const RelayOptions& mOptions;
  const Clock::time_point mStart;
  const uint32_t mNumber;
  const int mProcess;
  const std::unique_ptr<Tracer> mTracer;
  int mClientFd;
  int mDaemonFd = -1;
  Pipe mUp{Direction::kToDaemon};
  Pipe mDown{Direction::kToClient};
  bool mFinished = false;
};

}  // namespace orbsim
