// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// Passes a byte stream to the receiver, first with a handler that keeps the frames, then with a
// session that dispatches them. Input: the stream.
#include <sys/socket.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include "CappedReceive.h"
#include "Check.h"
#include "FuzzTarget.h"
#include "IpcReceiver.h"
#include "OrbIpcClientSession.h"
#include "ProcessState.h"
#include "SendBlobMessage.h"
#include "Watchdog.h"

namespace {

using Bytes = std::vector<unsigned char>;

constexpr size_t kLongestStream = 32 * 1024;  // a socket's buffer has space for this
constexpr unsigned int kNoConstructor = 6;
constexpr unsigned int kBuildsNothing = 7;

struct Frame {
  ipcMsg_t header;
  Bytes payload;

  bool operator==(const Frame& other) const {
    return std::memcmp(&header, &other.header, sizeof header) == 0 && payload == other.payload;
  }
};

// The frames of a stream. The missing bytes of an incomplete header are zero. The first incomplete
// payload ends the stream.
std::vector<Frame> framesOf(const uint8_t* data, size_t size) {
  std::vector<Frame> frames;
  while (size > 0) {
    Frame frame{};
    const size_t head = std::min(size, sizeof frame.header);
    std::memcpy(&frame.header, data, head);
    frame.header.payloadLength = std::min(frame.header.payloadLength, kLargestPayload);
    data += head;
    size -= head;
    if (frame.header.payloadLength > size) break;
    const size_t length = static_cast<size_t>(frame.header.payloadLength);
    frame.payload.assign(data, data + length);
    data += length;
    size -= length;
    frames.push_back(std::move(frame));
  }
  return frames;
}

class KeepingHandler : public ProcessHandler {
 public:
  void handleMsg(ipcMsg_t* msg) override {
    FUZZ_CHECK(mEnds == 0);
    mFrames.push_back({*msg, {msg->payload(), msg->payload() + msg->payloadLength}});
  }
  // Not for a socket that is not registered.
  void handleSessionEnd(unsigned int) override { std::abort(); }
  void handleReceiverEnd(int) override { ++mEnds; }

  std::vector<Frame> mFrames;
  int mEnds = 0;
};

// A socket that contains the stream, then its end.
int socketWith(const uint8_t* data, size_t size) {
  int fds[2] = {-1, -1};
  FUZZ_CHECK(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, fds) == 0);
  FUZZ_CHECK(size == 0 || send(fds[1], data, size, MSG_NOSIGNAL) == static_cast<ssize_t>(size));
  close(fds[1]);
  return fds[0];
}

void checkReceiver(const uint8_t* data, size_t size, const std::vector<Frame>& expected) {
  KeepingHandler handler;
  ipcReceiver(socketWith(data, size), handler);
  FUZZ_CHECK(handler.mFrames == expected);
  FUZZ_CHECK(handler.mEnds == 1);
}

struct Dispatched {
  std::vector<Bytes> blobs;  // the blobs of the messages
  size_t nothing = 0;        // calls of handlers without a message
};

std::shared_ptr<OrbIpcMessage> build(Bytes payload) {
  if (payload.size() < SendBlobMessage::kTypeSize) return nullptr;
  auto message = std::make_shared<SendBlobMessage>();
  message->deserialize(std::move(payload));
  return message;
}

std::shared_ptr<OrbIpcClientSession> sessionThatTells(Dispatched& dispatched) {
  const auto session = std::make_shared<OrbIpcClientSession>(ProcessId::LCE, false);
  const auto handle = [&dispatched](const std::shared_ptr<OrbIpcMessage>& message) {
    if (message) FUZZ_CHECK(message->session() != nullptr);
    if (message) {
      dispatched.blobs.push_back(static_cast<SendBlobMessage&>(*message).blob());
    } else {
      ++dispatched.nothing;
    }
  };
  const auto buildNothing = [](Bytes) { return std::shared_ptr<OrbIpcMessage>(); };
  session->registerForMessages({{SendBlobMessage::ID, {build, handle}},
                                {kNoConstructor, {nullptr, handle}},
                                {kBuildsNothing, {buildNothing, handle}}});
  return session;
}

void checkSession(const uint8_t* data, size_t size, const std::vector<Frame>& frames) {
  Dispatched dispatched;
  const auto session = sessionThatTells(dispatched);
  const auto socket = std::make_shared<IpcSocket>(socketWith(data, size));
  receiveFrames(socket, HandlerRef(session, session->threadSemaphore()));

  std::vector<Bytes> blobs;
  size_t nothing = 0;
  for (const Frame& frame : frames) {
    const auto id = static_cast<unsigned int>(frame.header.msgId);  // the library uses 32 bits
    const bool whole = frame.payload.size() >= SendBlobMessage::kTypeSize;
    if (id == SendBlobMessage::ID && whole)
      blobs.emplace_back(frame.payload.begin() + SendBlobMessage::kTypeSize, frame.payload.end());
    if ((id == SendBlobMessage::ID && !whole) || id == kBuildsNothing) ++nothing;
  }
  FUZZ_CHECK(dispatched.blobs == blobs);
  FUZZ_CHECK(dispatched.nothing == nothing);
}

}  // namespace

int LLVMFuzzerInitialize(int*, char***) { return 0; }

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const Watchdog::Step step("frames");
  size = std::min(size, kLongestStream);
  const size_t descriptors = processstate::descriptors();
  const std::vector<Frame> frames = framesOf(data, size);
  checkReceiver(data, size, frames);
  checkSession(data, size, frames);
  FUZZ_CHECK(processstate::descriptorsComeBackTo(descriptors));
  return 0;
}
