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

// A session as other code sees it.
struct SessionView {
  uint32_t id = 0;
  int process = 0;  // 0 if the process has no number here
  uint64_t endpoint = 0;
};

// The settings of a daemon; fixed for its lifetime.
struct Options {
  std::string socketPath = kSocketPath;
  int backlog = 16;
  std::chrono::milliseconds reportInterval{500};  // 0: no periodic reports
  uint64_t seed = 1;                              // of the model
  ModelSettings model;
  bool record = true;  // keep frames, replies and states for tests; false: only count them
  size_t maxQueuedBytes = size_t{64} << 20;     // per session, for a client that does not read
  std::function<void(const std::string&)> log;  // one line per event, from any thread; may be empty
  // Called on the session's thread: a handshake was completed or the connection of that session was
  // closed; a frame was received, before it is handled.
  std::function<void(const SessionView& session, bool open)> onSession;
  std::function<void(const Frame&)> onFrame;
  TraceSink trace;  // traffic of each connection, from any thread; may be empty
};

// Does the daemon's part of a handshake on `fd`. True: the connection continues as a session;
// false: it is closed. It may block in recv; closing the session or stopping the daemon ends that.
using HandshakeScript = std::function<bool(int fd, uint32_t sessionId)>;
// The same, but it can also log, and its records are traced.
using SessionHandshake = std::function<bool(Session& session)>;
// Gets every frame before the services. True: the frame is handled, and no service gets it.
using FrameHandler = std::function<bool(Session& session, const Frame& frame)>;

// The data that all sessions of one daemon share: settings that a script may change at any time,
// the hooks, the log and the recorder. Owned by Daemon and lives longer than its sessions; used by
// any thread. `mLock` guards the hooks, the refusals and the set of muted services; it is not held
// while hooks are called.
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

  // Requests to refuse, in the order in which the refusals were added.
  void refuse(const Refusal& refusal);
  std::optional<Refusal> takeRefusal(const RequestWords& request);
  bool refuses() const { return mRefuses.load(); }
  // The delay of answers.
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
