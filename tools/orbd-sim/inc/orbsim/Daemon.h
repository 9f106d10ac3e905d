// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "Mutex.h"
#include "orbsim/Control.h"
#include "orbsim/Frame.h"
#include "orbsim/Session.h"
#include "orbsim/SocketPlace.h"

namespace orbsim {

// The daemon's side of the socket, for a program to run and for tests to script. start() creates
// one thread that accepts connections; every connection has its own thread. The owner's thread
// calls start(), stop() and the destructor. Any thread may call all other functions, also hooks,
// while the daemon is running or stopped. `mPlaceLock` guards the socket's path, so that only one
// thread at a time creates or removes it. `mLock`, which is taken after it, guards the listener's
// state, the id counter and the list of sessions. Neither is held while a thread is joined or a
// hook runs.
//
// By default, no frame is sent before the client's first frame, because a client could read a frame
// together with the last handshake record.
class Daemon {
 public:
  using Timeout = std::chrono::milliseconds;
  template <class State>
  using StateCondition = std::function<bool(const State&)>;
  static constexpr Timeout kTimeout{10000};  // long: a wait ends as soon as its condition is true

  explicit Daemon(Options options = {});
  ~Daemon();  // stops
  Daemon(const Daemon&) = delete;
  Daemon& operator=(const Daemon&) = delete;

  // Replaces a socket on which no process listens, and listens. The directory must exist; only that
  // of kSocketPath is created if missing. False with error() on failure; true if it is already
  // running. A started daemon counts session ids from 1 again, like a restarted process.
  bool start();
  // Closes the listener and all sessions and waits for the threads, also if clients do not read.
  // Removes a directory that start() created. Do not call it from a hook. A stopped daemon can be
  // started again; scripts and records are kept.
  void stop();
  bool running() const;
  const std::string& error() const { return mError; }
  const std::string& socketPath() const { return mControl.options().socketPath; }

  // Observation. Totals, frames and replies are counted over restarts until clearRecords(). The
  // waits return false after the timeout.
  size_t sessionCount() const;                    // open, with a completed handshake
  std::vector<uint32_t> sessionIds() const;       // the same, oldest first
  std::vector<SessionView> sessionViews() const;  // the same
  Totals totals() const { return mControl.recorder().totals(); }
  std::vector<Frame> frames() const { return mControl.recorder().frames(); }
  std::vector<Blob> handshakeReplies() const { return mControl.recorder().handshakeReplies(); }
  LceState lceState(uint32_t sessionId) const { return state<LceState>(sessionId); }
  LleState lleState(uint32_t sessionId) const { return state<LleState>(sessionId); }
  LliState lliState(uint32_t sessionId) const { return state<LliState>(sessionId); }
  void clearRecords() { mControl.recorder().clear(); }

  bool waitForConnections(size_t count, Timeout timeout = kTimeout) const;
  bool waitForSessions(size_t count, Timeout timeout = kTimeout) const;
  // When these return true, the descriptors and threads of closed sessions are gone.
  bool waitForConnectionsClosed(size_t count, Timeout timeout = kTimeout);
  bool waitForSessionsClosed(size_t count, Timeout timeout = kTimeout);
  bool waitForFrames(size_t count, Timeout timeout = kTimeout) const;
  // Waits for a recorded frame that matches; `found` gets a copy. The predicates are called while
  // the recorder is locked, so they must not call the daemon.
  bool waitForFrame(const std::function<bool(const Frame&)>& wanted, Frame* found = nullptr,
                    Timeout timeout = kTimeout) const;
  // The same, and until it has been dealt with: what is ordered then comes after that.
  bool waitForFrameDealtWith(const std::function<bool(const Frame&)>& wanted,
                             Frame* found = nullptr, Timeout timeout = kTimeout) const;
  bool waitForLceState(uint32_t sessionId, const StateCondition<LceState>& condition,
                       Timeout timeout = kTimeout) const {
    return mControl.recorder().waitForState(sessionId, condition, timeout);
  }
  bool waitForLleState(uint32_t sessionId, const StateCondition<LleState>& condition,
                       Timeout timeout = kTimeout) const {
    return mControl.recorder().waitForState(sessionId, condition, timeout);
  }
  bool waitForLliState(uint32_t sessionId, const StateCondition<LliState>& condition,
                       Timeout timeout = kTimeout) const {
    return mControl.recorder().waitForState(sessionId, condition, timeout);
  }

  // Actions. A session is named by its id; if two have the same id, it is the newer one. False if
  // there is no such open session, or if its queue is full because the client does not read.
  bool sendFrame(uint32_t sessionId, const Header& header, const Blob& payload);
  bool sendBlob(uint32_t sessionId, uint32_t sdkType, const Blob& blob);
  bool sendBytes(uint32_t sessionId, const Blob& bytes);
  // The header of a correct frame to that session.
  Header headerFor(uint32_t sessionId, uint64_t messageId, size_t payloadLength) const;
  size_t queuedBytes(uint32_t sessionId) const;
  // Starts closing; waitForSessionsClosed() waits for the end. Also for unfinished handshakes.
  bool closeSession(uint32_t sessionId);
  void closeAll();
  // Closes the listening socket and removes its path; sessions continue. start() does not undo this
  // before stop(); reappear() does.
  void killListener();
  // The same, but the path stays, so that connections are refused; stop() removes it. False, with a
  // line in the log, on failure. No effect on a daemon that does not run.
  bool refuseConnections();
  // Like the end of a daemon: no listener and no session is left.
  void vanish();
  // Undoes vanish(), killListener() and refuseConnections() like a restart: session ids are counted
  // from 1 again. False, with a line in the log, if the socket cannot be created.
  bool reappear();
  // Sends to every session whose client has used that service; returns their number.
  size_t sendToUsers(uint32_t sdkType, const Blob& blob);
  // Adds a refusal for requests; sets the delay of answers.
  void refuse(const Refusal& refusal) { mControl.refuse(refusal); }
  void setAnswerDelay(Milliseconds delay) { mControl.setAnswerDelay(delay); }
  // While off, connections stay in the backlog.
  void setAccepting(bool on);
  // While off, sessions do not read data from clients.
  void setReading(bool on);
  void setNextSessionId(uint32_t id);
  void setReportInterval(std::chrono::milliseconds interval);
  // Whether services answer and report automatically: all, or the service with that number.
  void setAutoAnswer(bool on) { mControl.setAnswers(on); }
  void setAutoAnswer(uint32_t sdkType, bool on) { mControl.setAnswers(sdkType, on); }
  void setFrameHandler(FrameHandler handler) { mControl.setFrameHandler(std::move(handler)); }
  // The device of the model, and its time.
  World& world() { return mControl.world(); }
  // For connections accepted from now on; empty restores the normal handshake.
  void setHandshake(HandshakeScript script) { mControl.setHandshakeScript(std::move(script)); }
  void setSessionHandshake(SessionHandshake handshake) {
    mControl.setHandshake(std::move(handshake));
  }
  // Adds a line to the log.
  void log(const std::string& line) { mControl.log("%s", line.c_str()); }

 private:
  struct Entry {
    std::shared_ptr<Session> session;
    std::thread thread;
  };

  template <class State>
  State state(uint32_t sessionId) const {
    return mControl.recorder().state<State>(sessionId);
  }
  void wakeSessions() const;
  void acceptLoop();
  void acceptOne();
  void pauseAccepting();
  void reapFinished();
  // What exists at the path now.
  enum class Presence { kNothing, kListener, kUnused };

  bool openPlace();
  void closePlace();
  void leaveDirectory();
  void clearPlace() ORB_REQUIRES(mPlaceLock);
  void tell(const std::vector<std::string>& lines);
  bool serving() const;
  void silenceListener() ORB_REQUIRES(mPlaceLock);
  void takeListener(int fd);
  void closeListener() ORB_REQUIRES(mLock);
  void closeRetired() ORB_REQUIRES(mLock);
  std::shared_ptr<Session> find(uint32_t sessionId, bool establishedOnly) const;
  std::vector<std::shared_ptr<Session>> sessions() const;

  Control mControl;
  WakeFd mWake;
  std::string mError;         // the owner's thread only
  std::thread mAcceptThread;  // the owner's thread only

  Mutex mPlaceLock;
  SocketPlace mPlace ORB_GUARDED_BY(mPlaceLock);
  Presence mPresence ORB_GUARDED_BY(mPlaceLock) = Presence::kNothing;

  mutable Mutex mLock;
  bool mRunning ORB_GUARDED_BY(mLock) = false;
  bool mStopping ORB_GUARDED_BY(mLock) = false;
  bool mListenerKilled ORB_GUARDED_BY(mLock) = false;
  bool mAccepting ORB_GUARDED_BY(mLock) = true;
  std::vector<int> mRetiredFds ORB_GUARDED_BY(mLock);  // of killed listeners
  // The accept thread closes them, or stop() after that thread has ended.
  int mListenFd ORB_GUARDED_BY(mLock) = -1;
  uint32_t mNextId ORB_GUARDED_BY(mLock) = 1;
  std::vector<Entry> mSessions ORB_GUARDED_BY(mLock);
};

}  // namespace orbsim
