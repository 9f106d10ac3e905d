// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

#include "orbsim/Control.h"
#include "orbsim/Frame.h"
#include "orbsim/Handshake.h"
#include "orbsim/Service.h"
#include "orbsim/Trace.h"
#include "orbsim/WakeFd.h"

namespace orbsim {

// One client's connection, from the handshake to its end. Owned by Daemon; run() is the body of the
// session's own thread, which reads, runs the services and closes the descriptors. Any thread may
// send and close: sending never blocks, what the socket does not take at once is queued and written
// by the session's thread. `mLock` guards the descriptors' validity and the queue; it is held
// across non-blocking calls only.
class Session {
 public:
  Session(int fd, uint32_t id, Control& control);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  void run();

  uint32_t id() const { return mId; }
  // The client's endpoint number: from its handshake, else from its first frame; 0 until then.
  uint64_t endpoint() const { return mEndpoint.load(); }
  bool established() const { return mEstablished.load(); }
  bool finished() const { return mFinished.load(); }

  // For a handshake, on the session's thread: the socket, which that owns and closes; the ordinary
  // exchange; what a record that is sent or read in another way is told to.
  int socket() const { return mFd; }
  bool shakeHands();
  const HandshakeTap& tap() const { return mTap; }

  // Sends bytes as they are. False when the session has ended or its queue is full.
  bool send(Blob bytes);
  // Sends the header exactly as given, also where it does not fit the payload.
  bool sendFrame(const Header& header, const Blob& payload);
  bool sendBlob(uint32_t sdkType, const Blob& blob);
  // An answer of a service, on the session's thread: in its order, and late while answers are.
  bool answerBlob(uint32_t sdkType, const Blob& blob);
  // Whether the request that is being dealt with is to be answered, on the session's thread.
  bool answersRequest() const { return mAnswersRequest; }
  // Whether the client has asked that service for anything.
  bool uses(uint32_t sdkType) const { return (mUses.load() & bitOf(sdkType)) != 0; }
  SessionView view() const { return {mId, mProcess, endpoint()}; }
  // The header of a well-formed frame to this client.
  Header headerFor(uint64_t messageId, size_t payloadLength) const;
  size_t queuedBytes() const;

  // Shuts the connection down; the session's thread then ends it. Does not wait.
  void close();
  // Makes the session's thread look at changed settings.
  void wake();

  void log(const char* format, ...) __attribute__((format(printf, 2, 3)));

 private:
  bool handshake();
  void serve();
  bool waitForWork(short& events);
  bool receive();
  bool handleInput();
  void handleFrame(const Frame& frame);
  std::optional<Refusal> decideOn(const Frame& frame);
  void refuse(const Frame& frame, const Refusal& refusal);
  void sendLate();
  static uint32_t bitOf(uint32_t sdkType) { return sdkType < 32 ? 1u << sdkType : 0; }
  bool enqueue(Blob bytes);
  void flush();
  bool flushLocked();
  void runDueServices();
  int pollTimeout() const;
  void finish();

  const uint32_t mId;
  Control& mControl;
  const int mProcess;                     // that connected; 0 where it has no number on this side
  const std::unique_ptr<Tracer> mTracer;  // none while nobody wants a trace
  const HandshakeTap mTap;
  std::atomic<uint64_t> mEndpoint{0};
  std::atomic<bool> mEstablished{false};
  std::atomic<bool> mFinished{false};
  std::atomic<uint32_t> mUses{0};  // a bit for each service

  // The session's thread only.
  FrameReader mReader;
  std::map<uint32_t, std::unique_ptr<Service>> mServices;
  std::deque<std::pair<Clock::time_point, Blob>> mLate;  // answers with their times
  bool mAnswersRequest = true;                           // as it was set when the request came
  Milliseconds mAnswerDelay{0};
  bool mClientSpoke = false;  // nothing is sent on our own before the client's first frame
  bool mPeerGone = false;     // hung up while reading was switched off

  mutable std::mutex mLock;
  WakeFd mWake;              // closed together with the socket
  int mFd;                   // -1 once closed
  bool mClosing = false;     // close() was called
  bool mSendFailed = false;  // the client takes nothing more, but may have left something to read
  std::deque<Blob> mQueue;
  size_t mQueueOffset = 0;  // sent part of the first queued element
  size_t mQueuedBytes = 0;
};

}  // namespace orbsim
