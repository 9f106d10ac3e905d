// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <atomic>
#include <chrono>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "orbsim/Frame.h"
#include "orbsim/Model.h"
#include "orbsim/Recorder.h"
#include "orbsim/Requests.h"
#include "orbsim/SocketPlace.h"
#include "orbsim/Trace.h"

namespace orbsim {

class Session;
class World;

// A session, as people see it.
struct SessionView {
  uint32_t id = 0;
  int process = 0;  // 0 where it has no number on this side
  uint64_t endpoint = 0;
};

// How a daemon is set up; fixed for its life.
struct Options {
  std::string socketPath = kSocketPath;
  int backlog = 16;
  std::chrono::milliseconds reportInterval{500};  // 0: no periodic reports
  uint64_t seed = 1;                              // of the model
  ModelSettings model;
  bool record = true;  // keep frames, replies and states for tests; false: only count them
  size_t maxQueuedBytes = size_t{64} << 20;     // per session, for a client that does not read
  std::function<void(const std::string&)> log;  // one line per event, from any thread; may be empty
  // From the session's thread: a handshake was completed, that session's connection is closed; a
  // frame has come, before anything is done about it.
  std::function<void(const SessionView& session, bool open)> onSession;
  std::function<void(const Frame&)> onFrame;
  TraceSink trace;  // what passes on each connection, from any thread; may be empty
};

// Plays the daemon's side of a handshake on `fd`. True: the connection goes on as a session, false:
// it is closed. It may block in recv: closing the session or stopping the daemon ends that.
using HandshakeScript = std::function<bool(int fd, uint32_t sessionId)>;
// The same, for one that logs, too, and whose records are traced.
using SessionHandshake = std::function<bool(Session& session)>;
// Sees every frame before the services. True: the frame is dealt with, no service sees it.
using FrameHandler = std::function<bool(Session& session, const Frame& frame)>;

// What the sessions of one daemon share: settings that a script may change while they run, the
// hooks, the log and the recorder. Owned by Daemon and outlives its sessions; used by any thread.
// `mLock` guards the hooks, the refusals and the set of muted services; hooks are called without
// it.
class Control {
 public:
  explicit Control(const Options& options);
  ~Control();

  const Options& options() const { return mOptions; }
  Recorder& recorder() { return mRecorder; }
  const Recorder& recorder() const { return mRecorder; }
  World& world() { return *mWorld; }

  bool logs() const { return static_cast<bool>(mOptions.log); }
  void log(const char* format, ...) __attribute__((format(printf, 2, 3)));

  SessionHandshake handshake() const;
  void setHandshake(SessionHandshake handshake);
  void setHandshakeScript(HandshakeScript script);
  FrameHandler frameHandler() const;
  void setFrameHandler(FrameHandler handler);

  bool answers(uint32_t sdkType) const;
  void setAnswers(bool on);
  void setAnswers(uint32_t sdkType, bool on);

  // Requests that are not carried out, in the order in which they were refused.
  void refuse(const Refusal& refusal);
  std::optional<Refusal> takeRefusal(const RequestWords& request);
  bool refuses() const { return mRefuses.load(); }
  // By how much answers come late.
  Milliseconds answerDelay() const { return Milliseconds(mAnswerDelay.load()); }
  void setAnswerDelay(Milliseconds delay) { mAnswerDelay.store(delay.count()); }

  bool reading() const { return mReading.load(); }
  void setReading(bool on) { mReading.store(on); }
  std::chrono::milliseconds reportInterval() const {
    return std::chrono::milliseconds(mReportInterval.load());
  }
  void setReportInterval(std::chrono::milliseconds interval);

 private:
  const Options mOptions;
  Recorder mRecorder;
  const std::unique_ptr<World> mWorld;
  std::atomic<int64_t> mReportInterval;
  std::atomic<int64_t> mAnswerDelay{0};
  std::atomic<bool> mRefuses{false};
  std::atomic<bool> mReading{true};

  mutable std::mutex mLock;
  SessionHandshake mHandshake;
  FrameHandler mFrameHandler;
  bool mAllMuted = false;
  std::set<uint32_t> mMuted;
  std::vector<Refusal> mRefusals;
};

}  // namespace orbsim
