// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "orbsim/Session.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <utility>

#include "orbsim/Handshake.h"
#include "orbsim/World.h"

namespace orbsim {
namespace {

std::unique_ptr<Tracer> makeTracer(uint32_t id, int process, const Control& control) {
  const TraceSink& sink = control.options().trace;
  return sink ? std::make_unique<Tracer>(id, process, sink) : nullptr;
}

HandshakeTap makeTap(Tracer* tracer) {
  if (tracer == nullptr) return {};
  return [tracer](Direction direction, const uint8_t* data, size_t size) {
    tracer->feed(direction, data, size);
  };
}

}  // namespace

Session::Session(int fd, uint32_t id, Control& control)
    : mId(id),
      mControl(control),
      mProcess(processBehind(fd)),
      mTracer(makeTracer(id, mProcess, control)),
      mTap(makeTap(mTracer.get())),
      mFd(fd) {}

Session::~Session() {
  if (mFd >= 0) ::close(mFd);  // only if run() was never called
}

void Session::run() {
  if (handshake()) {
    mEstablished.store(true);
    mControl.recorder().sessionOpened();
    mControl.world().connected();
    log("open");
    if (mControl.options().onSession) mControl.options().onSession(view(), true);
    serve();
  }
  finish();
}

// The descriptor stays open until finish(), which this thread calls, so it is used here without the
// lock. A close() from another thread only shuts the socket down.
bool Session::handshake() {
  const SessionHandshake handshake = mControl.handshake();
  const bool done = handshake ? handshake(*this) : shakeHands();
  if (mTracer) mTracer->skipHandshake();  // a script may do the handshake without the tap
  return done;
}

bool Session::shakeHands() {
  HandshakeReply reply;
  const bool done = performHandshake(mFd, mId, reply, mTap);
  if (!reply.bytes.empty()) mControl.recorder().handshakeReply(reply.bytes);
  mEndpoint.store(static_cast<uint64_t>(static_cast<int64_t>(reply.endpoint)));
  if (!done) log("handshake failed after %zu bytes", reply.bytes.size());
  return done;
}

void Session::serve() {
  for (;;) {
    short events = 0;
    if (!waitForWork(events)) return;
    if ((events & POLLOUT) != 0) flush();
    if ((events & (POLLIN | POLLHUP | POLLERR)) != 0) {
      if (!mControl.reading()) {
        mPeerGone = (events & (POLLHUP | POLLERR)) != 0;
      } else if (!receive()) {
        return;
      }
    }
    runDueServices();
  }
}

// Waits for an event and returns the readiness of the socket. False at the end.
bool Session::waitForWork(short& events) {
  const bool reading = mControl.reading();
  pollfd fds[2] = {};
  fds[0].fd = mWake.fd();
  fds[0].events = POLLIN;
  // poll always reports a hang-up. A disconnected socket that is not read must not be polled, or
  // the poll would return at once again and again.
  fds[1].fd = (mPeerGone && !reading) ? -1 : mFd;
  if (reading) fds[1].events = POLLIN;
  if (queuedBytes() > 0) fds[1].events = static_cast<short>(fds[1].events | POLLOUT);
  if (::poll(fds, 2, pollTimeout()) < 0 && errno != EINTR) return false;
  if ((fds[0].revents & POLLIN) != 0) mWake.drain();
  events = fds[1].revents;
  std::lock_guard<std::mutex> lock(mLock);
  return !mClosing;
}

bool Session::receive() {
  uint8_t buffer[64 * 1024];
  const ssize_t got = ::recv(mFd, buffer, sizeof(buffer), MSG_DONTWAIT);
  if (got < 0) return errno == EINTR || errno == EAGAIN || errno == EWOULDBLOCK;
  if (got == 0) return false;
  if (mTracer) mTracer->feed(Direction::kToDaemon, buffer, static_cast<size_t>(got));
  mReader.feed(buffer, static_cast<size_t>(got));
  return handleInput();
}

bool Session::handleInput() {
  for (;;) {
    Frame frame;
    frame.sessionId = mId;
    switch (mReader.next(frame.header, frame.payload)) {
      case FrameReader::Result::kIncomplete:
        return true;
      case FrameReader::Result::kTooLong:
        log("frame of %llu bytes refused",
            static_cast<unsigned long long>(frame.header.payloadLength));
        return false;
      case FrameReader::Result::kFrame:
        handleFrame(frame);
        break;
    }
  }
}

void Session::handleFrame(const Frame& frame) {
  mClientSpoke = true;
  if (endpoint() == 0) mEndpoint.store(frame.header.source);
  // Before it is recorded, because a test that has seen the request may change settings for the
  // next one.
  mAnswersRequest = mControl.answers(frame.sdkType());
  mAnswerDelay = mControl.answerDelay();
  const uint64_t number = mControl.recorder().frame(frame);
  if (mControl.options().onFrame) mControl.options().onFrame(frame);
  dealWith(frame);
  mControl.recorder().dealtWith(number);
}

void Session::dealWith(const Frame& frame) {
  mUses.fetch_or(bitOf(frame.sdkType()));
  const FrameHandler handler = mControl.frameHandler();
  if (handler && handler(*this, frame)) return;
  if (!frame.isBlob()) {
    log("ignored: message %llu subsystem %lld with %zu bytes",
        static_cast<unsigned long long>(frame.header.messageId),
        static_cast<long long>(frame.header.subsystemId), frame.payload.size());
    return;
  }
  const uint32_t type = frame.sdkType();
  std::unique_ptr<Service>& service = mServices[type];
  if (!service) service = makeService(type, *this, mControl);
  if (!service) {
    log("%s: ignored: no such service (%u) here", serviceName(type), type);
    return;
  }
  if (mControl.refuses() && refuse(frame)) return;
  service->handleBlob(frame.blob());
}

bool Session::refuse(const Frame& frame) {
  const RequestWords request = wordsOf(frame);
  const auto refusal = mControl.takeRefusal(request);
  if (!refusal) return false;
  log("%s: %s refused: %s", serviceName(frame.sdkType()), request.request.c_str(),
      refusal->with.c_str());
  answerBlob(frame.sdkType(), refusalOf(frame, *refusal));
  return true;
}

bool Session::answerBlob(uint32_t sdkType, const Blob& blob) {
  if (mAnswerDelay.count() <= 0 && mLate.empty()) return sendBlob(sdkType, blob);
  auto due = Clock::now() + mAnswerDelay;
  if (!mLate.empty()) due = std::max(due, mLate.back().first);
  const Blob payload = encodeBlobPayload(sdkType, blob);
  mLate.emplace_back(due, encodeFrame(headerFor(kSendBlobMessageId, payload.size()), payload));
  return true;
}

void Session::sendLate() {
  const Clock::time_point now = Clock::now();
  while (!mLate.empty() && mLate.front().first <= now) {
    send(std::move(mLate.front().second));
    mLate.pop_front();
  }
}

bool Session::send(Blob bytes) {
  const bool sent = enqueue(std::move(bytes));
  if (mTracer) mTracer->tell();
  return sent;
}

bool Session::enqueue(Blob bytes) {
  std::lock_guard<std::mutex> lock(mLock);
  if (mFd < 0 || mClosing || mSendFailed) return false;
  if (mQueuedBytes + bytes.size() > mControl.options().maxQueuedBytes) return false;
  if (mTracer) mTracer->take(Direction::kToClient, bytes.data(), bytes.size());
  mQueuedBytes += bytes.size();
  mQueue.push_back(std::move(bytes));
  if (mQueue.size() > 1) return true;  // the session's thread already waits for space
  if (!flushLocked()) return false;
  if (mQueuedBytes > 0) mWake.wake();
  return true;
}

void Session::flush() {
  std::lock_guard<std::mutex> lock(mLock);
  flushLocked();
}

// Writes as much of the queue as the socket accepts. False if the client has disconnected; the
// session's thread notices the end after it has read the client's last data.
bool Session::flushLocked() {
  while (!mQueue.empty()) {
    const Blob& front = mQueue.front();
    const size_t left = front.size() - mQueueOffset;
    const ssize_t sent =
        ::send(mFd, front.data() + mQueueOffset, left, MSG_NOSIGNAL | MSG_DONTWAIT);
    if (sent < 0 && errno == EINTR) continue;
    if (sent < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) return true;
    if (sent < 0) {
      mSendFailed = true;
      mQueue.clear();
      mQueueOffset = mQueuedBytes = 0;
      return false;
    }
    mQueuedBytes -= static_cast<size_t>(sent);
    mQueueOffset += static_cast<size_t>(sent);
    if (mQueueOffset == front.size()) {
      mQueue.pop_front();
      mQueueOffset = 0;
    }
  }
  return true;
}

size_t Session::queuedBytes() const {
  std::lock_guard<std::mutex> lock(mLock);
  return mQueuedBytes;
}

Header Session::headerFor(uint64_t messageId, size_t payloadLength) const {
  Header header;
  header.source = kDaemonProcessId;
  header.destination = endpoint();
  header.messageId = messageId;
  header.sessionId = mId;
  header.payloadLength = payloadLength;
  return header;
}

bool Session::sendFrame(const Header& header, const Blob& payload) {
  return send(encodeFrame(header, payload));
}

bool Session::sendBlob(uint32_t sdkType, const Blob& blob) {
  const Blob payload = encodeBlobPayload(sdkType, blob);
  return sendFrame(headerFor(kSendBlobMessageId, payload.size()), payload);
}

void Session::close() {
  std::lock_guard<std::mutex> lock(mLock);
  if (mFd < 0) return;
  mClosing = true;
  ::shutdown(mFd, SHUT_RDWR);
  mWake.wake();
}

void Session::wake() {
  std::lock_guard<std::mutex> lock(mLock);
  if (mFd >= 0) mWake.wake();
}

// Services send messages without a request only after the client's first frame.
void Session::runDueServices() {
  sendLate();
  if (!mClientSpoke) return;
  const Clock::time_point now = Clock::now();
  for (auto& entry : mServices) {
    if (!entry.second) continue;
    const auto due = entry.second->nextDue();
    if (due && *due <= now) entry.second->handleDue();
  }
}

int Session::pollTimeout() const {
  std::optional<Clock::time_point> earliest;
  if (!mLate.empty()) earliest = mLate.front().first;
  for (const auto& entry : mServices) {
    if (!entry.second) continue;
    const auto due = entry.second->nextDue();
    if (due && (!earliest || *due < *earliest)) earliest = due;
  }
  if (!earliest) return -1;
  const Clock::time_point now = Clock::now();
  if (*earliest <= now) return 0;
  // Rounded up, so that the poll does not wake up just before the time again and again.
  const auto wait = std::chrono::ceil<std::chrono::milliseconds>(*earliest - now);
  return static_cast<int>(std::min<int64_t>(wait.count(), 60000));
}

void Session::finish() {
  mServices.clear();
  const bool wasSession = mEstablished.exchange(false);
  {
    std::lock_guard<std::mutex> lock(mLock);
    ::close(mFd);
    mFd = -1;
    mWake.close();
    mQueue.clear();
    mQueueOffset = mQueuedBytes = 0;
  }
  if (mTracer) {
    mTracer->end(Direction::kToDaemon);
    mTracer->end(Direction::kToClient);
  }
  log("closed");
  mFinished.store(true);
  if (wasSession && mControl.options().onSession) mControl.options().onSession(view(), false);
  mControl.recorder().connectionClosed(mId, wasSession);
}

void Session::log(const char* format, ...) {
  if (!mControl.logs()) return;
  char text[900];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof(text), format, arguments);
  va_end(arguments);
  mControl.log("session %u %s endpoint %lld %s", mId, processText(mProcess).c_str(),
               static_cast<long long>(endpoint()), text);
}

}  // namespace orbsim
