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
#include <utility>

#include "orbsim/Control.h"
#include "orbsim/Frame.h"
#include "orbsim/Handshake.h"
#include "orbsim/Service.h"
#include "orbsim/Trace.h"
#include "orbsim/WakeFd.h"

namespace orbsim {

// One client's connection, from the handshake to its end. Owned by Daemon. run() is the body of the
// session's thread, which reads, runs the services and closes the descriptors. Any thread may send
// and close. Sending never blocks: data that the socket does not accept at once is queued, and the
// session's thread writes it. `mLock` guards the validity of the descriptors and the queue; it is
// held only across non-blocking calls.
class Session {
 public:
  Session(int fd, uint32_t id, Control& control);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  void run();

  uint32_t id() const { return mId; }
  // The client's endpoint number, from its handshake or else from its first frame; 0 before that.
  uint64_t endpoint() const { return mEndpoint.load(); }
  bool established() const { return mEstablished.load(); }
  bool finished() const { return mFinished.load(); }

  // For a handshake, on the session's thread: the socket, which the session owns and closes; the
  // normal handshake; the tap, which must get records that are sent or received in another way.
  int socket() const { return mFd; }
  bool shakeHands();
  const HandshakeTap& tap() const { return mTap; }

  // Sends bytes unchanged. False if the session has ended or its queue is full.
  bool send(Blob bytes);
  // Sends the header exactly as given, even if it does not match the payload.
  bool sendFrame(const Header& header, const Blob& payload);
  bool sendBlob(uint32_t sdkType, const Blob& blob);
  // Sends an answer of a service, on the session's thread, in order, and with the delay of answers.
  bool answerBlob(uint32_t sdkType, const Blob& blob);
  // Whether the current request must be answered; on the session's thread.
  bool answersRequest() const { return mAnswersRequest; }
  // Whether the client has sent a request to that service.
  bool uses(uint32_t sdkType) const { return (mUses.load() & bitOf(sdkType)) != 0; }
  SessionView view() const { return {mId, mProcess, endpoint()}; }
  // The header of a correct frame to this client.
  Header headerFor(uint64_t messageId, size_t payloadLength) const;
  size_t queuedBytes() const;

  // Shuts the connection down. The session's thread then ends it. Does not wait.
  void close();
  // Makes the session's thread check changed settings.
  void wake();

  void log(const char* format, ...) __attribute__((format(printf, 2, 3)));

 private:
  bool handshake();
  void serve();
  bool waitForWork(short& events);
  bool receive();
  bool handleInput();
  void handleFrame(const Frame& frame);
  void dealWith(const Frame& frame);
  bool refuse(const Frame& frame);
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
  const int mProcess;                     // of the client; 0 if the process has no number here
  const std::unique_ptr<Tracer> mTracer;  // null without a trace
  const HandshakeTap mTap;
  std::atomic<uint64_t> mEndpoint{0};
  std::atomic<bool> mEstablished{false};
  std::atomic<bool> mFinished{false};
  std::atomic<uint32_t> mUses{0};  // one bit per service

  // Only for the session's thread.
  FrameReader mReader;
  std::map<uint32_t, std::unique_ptr<Service>> mServices;
  std::deque<std::pair<Clock::time_point, Blob>> mLate;  // delayed answers with their times
  bool mAnswersRequest = true;                           // the setting when the request came
  Milliseconds mAnswerDelay{0};
  bool mClientSpoke = false;  // nothing is sent without a request before the client's first frame
  bool mPeerGone = false;     // the client disconnected while reading was off

  mutable std::mutex mLock;
  WakeFd mWake;              // closed together with the socket
  int mFd;                   // -1 once closed
  bool mClosing = false;     // whether close() was called
  bool mSendFailed = false;  // the client accepts no more data, but there may be data to read
  std::deque<Blob> mQueue;
  size_t mQueueOffset = 0;  // sent bytes of the first element
  size_t mQueuedBytes = 0;
};

}  // namespace orbsim
