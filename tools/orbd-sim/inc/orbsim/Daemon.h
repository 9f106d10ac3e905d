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

// The daemon's side of the socket, for a program to run and for tests to script. start() makes one
// thread that accepts; every connection gets a thread of its own. start(), stop() and the
// destructor belong to the owner's thread; everything else may be called from any thread, hooks
// included, while the daemon is running or stopped. `mPlaceLock` guards the socket's path, so that
// who takes it away and who puts it back come one after the other; `mLock`, which is taken after
// it, the listener's state, the id counter and the list of sessions. Neither is held while a thread
// is joined or a hook runs.
//
// Unless a script does otherwise, no frame is sent before the client's first one: to the client a
// frame right behind the last handshake record could be one read with it.
class Daemon {
 public:
  using Timeout = std::chrono::milliseconds;
  template <typename State>
  using StateCondition = std::function<bool(const State&)>;
  static constexpr Timeout kTimeout{10000};  // generous: waits end as soon as their condition holds

  explicit Daemon(Options options = {});
  ~Daemon();  // stops
  Daemon(const Daemon&) = delete;
  Daemon& operator=(const Daemon&) = delete;

  // Takes the place of a socket that nobody listens on, listens. The socket's directory must exist;
  // that of kSocketPath alone is made where it is missing. False with error() set when that fails;
  // true when it is running already. A started daemon counts session ids from 1 again, as a
  // restarted process would.
  bool start();
  // Closes listener and sessions and waits for the threads, also for clients that do not read.
  // A directory that start() made goes again. Not from a hook. A daemon that was stopped can be
  // started again; scripts and records stay.
  void stop();
  bool running() const;
  const std::string& error() const { return mError; }
  const std::string& socketPath() const { return mControl.options().socketPath; }

  // Observing. Totals, frames and replies add up over restarts until clearRecords(). The waits
  // return false when the time is up.
  size_t sessionCount() const;                    // open now, handshake completed
  std::vector<uint32_t> sessionIds() const;       // of those, oldest first
  std::vector<SessionView> sessionViews() const;  // of the same
  Totals totals() const { return mControl.recorder().totals(); }
  std::vector<Frame> frames() const { return mControl.recorder().frames(); }
  std::vector<Blob> handshakeReplies() const { return mControl.recorder().handshakeReplies(); }
  LceState lceState(uint32_t sessionId) const { return state<LceState>(sessionId); }
  LleState lleState(uint32_t sessionId) const { return state<LleState>(sessionId); }
  LliState lliState(uint32_t sessionId) const { return state<LliState>(sessionId); }
  void clearRecords() { mControl.recorder().clear(); }

  bool waitForConnections(size_t count, Timeout timeout = kTimeout) const;
  bool waitForSessions(size_t count, Timeout timeout = kTimeout) const;
  // The closed ones' descriptors and threads are gone when these return true.
  bool waitForConnectionsClosed(size_t count, Timeout timeout = kTimeout);
  bool waitForSessionsClosed(size_t count, Timeout timeout = kTimeout);
  bool waitForFrames(size_t count, Timeout timeout = kTimeout) const;
  // Until some recorded frame is the wanted one; `found` gets a copy. The predicates run with the
  // recorder locked: they must not call the daemon.
  bool waitForFrame(const std::function<bool(const Frame&)>& wanted, Frame* found = nullptr,
                    Timeout timeout = kTimeout) const;
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

  // Acting. A session is named by its id; when two have the same, the newer is meant. False when
  // there is no such open session, or when its queue is full because the client does not read.
  bool sendFrame(uint32_t sessionId, const Header& header, const Blob& payload);
  bool sendBlob(uint32_t sessionId, uint32_t sdkType, const Blob& blob);
  bool sendBytes(uint32_t sessionId, const Blob& bytes);
  // The header of a well-formed frame to that session.
  Header headerFor(uint32_t sessionId, uint64_t messageId, size_t payloadLength) const;
  size_t queuedBytes(uint32_t sessionId) const;
  // Start closing; waitForSessionsClosed() tells when it is done. Unfinished handshakes included.
  bool closeSession(uint32_t sessionId);
  void closeAll();
  // Closes the listening socket and removes its path; sessions go on. start() does not undo it
  // before stop(), reappear() does.
  void killListener();
  // The same, but the path stays, so that connections are refused; it goes with stop(). False, with
  // a line in the log, when the path cannot be had. A daemon that does not run is left alone.
  bool refuseConnections();
  // As a daemon that has ended: nobody listens, and no session is left.
  void vanish();
  // Undoes vanish(), killListener() and refuseConnections() as a restart would: session ids count
  // from 1 again. False, with a line in the log, when the socket cannot be had any more.
  bool reappear();
  // To every session whose client has asked that service for something; how many those are.
  size_t sendToUsers(uint32_t sdkType, const Blob& blob);
  // Requests to be refused, and by how much answers come late.
  void refuse(const Refusal& refusal) { mControl.refuse(refusal); }
  void setAnswerDelay(Milliseconds delay) { mControl.setAnswerDelay(delay); }
  // While off, connections stay in the backlog.
  void setAccepting(bool on);
  // While off, sessions do not read what clients send.
  void setReading(bool on);
  void setNextSessionId(uint32_t id);
  void setReportInterval(std::chrono::milliseconds interval);
  // Whether services answer and report on their own; all, or the one with that number.
  void setAutoAnswer(bool on) { mControl.setAnswers(on); }
  void setAutoAnswer(uint32_t sdkType, bool on) { mControl.setAnswers(sdkType, on); }
  void setFrameHandler(FrameHandler handler) { mControl.setFrameHandler(std::move(handler)); }
  // The device that the services tell of, and its time.
  World& world() { return mControl.world(); }
  // For connections accepted from now on; empty gives the ordinary handshake back.
  void setHandshake(HandshakeScript script) { mControl.setHandshakeScript(std::move(script)); }
  void setSessionHandshake(SessionHandshake handshake) {
    mControl.setHandshake(std::move(handshake));
  }
  // A line beside the daemon's own.
  void log(const std::string& line) { mControl.log("%s", line.c_str()); }

 private:
  struct Entry {
    std::shared_ptr<Session> session;
    std::thread thread;
  };

  template <typename State>
  State state(uint32_t sessionId) const {
    return mControl.recorder().state<State>(sessionId);
  }
  void wakeSessions() const;
  void acceptLoop();
  void acceptOne();
  void pauseAccepting();
  void reapFinished();
  // What the path has at present.
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
  std::vector<int> mRetiredFds ORB_GUARDED_BY(mLock);  // of listeners that were killed
  // Closed by the accept thread, or by stop() after that has ended.
  int mListenFd ORB_GUARDED_BY(mLock) = -1;
  uint32_t mNextId ORB_GUARDED_BY(mLock) = 1;
  std::vector<Entry> mSessions ORB_GUARDED_BY(mLock);
};

}  // namespace orbsim
