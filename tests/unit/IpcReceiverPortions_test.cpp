// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Frames that arrive in portions of any size and with any end: the frames, the lines and the end of
// the session are the same.
#include <errno.h>
#include <gtest/gtest.h>

#include <numeric>
#include <stdexcept>

#include "IpcReceiver.h"
#include "IpcTestSupport.h"

namespace {

using namespace ipctest;
using Bytes = std::vector<unsigned char>;
using Frames = std::vector<RecordingHandler::Frame>;

constexpr size_t kHeader = sizeof(ipcMsg_t);

Bytes frame(uint64_t id, size_t payloadLength) {
  const ipcMsg_t header = {1, 105, id, -2, 7, payloadLength};
  const auto* raw = reinterpret_cast<const unsigned char*>(&header);
  Bytes bytes(raw, raw + sizeof header);
  bytes.resize(kHeader + payloadLength);
  std::iota(bytes.begin() + kHeader, bytes.end(), static_cast<unsigned char>(id));
  return bytes;
}

Bytes operator+(Bytes first, const Bytes& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

Bytes bytesOf(const Frames& frames) {
  Bytes all;
  for (const auto& each : frames) {
    const auto* raw = reinterpret_cast<const unsigned char*>(&each.header);
    all = all + Bytes(raw, raw + kHeader) + each.payload;
  }
  return all;
}

// A socket pair whose receiving end gives each write as a separate portion. A receive for more than
// the reader's buffer would get only the first portion, so payloads are short here.
struct PortionPair : SocketPair {
  PortionPair() {
    closePeer();
    close(ours);
    int fds[2] = {-1, -1};
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, fds) != 0) abort();
    ours = fds[0];
    peer = fds[1];
  }
  void write(const Bytes& portion) const { SocketPair::write(portion.data(), portion.size()); }
};

// The receiver's results: the frames and the lines up to the end.
struct Outcome {
  Frames frames;
  Entries lines;
};

Outcome receiveAll(SocketPair& pair) {
  recording::clear();
  RecordingHandler handler;
  errno = 0;
  ipcReceiver(pair.ours, handler);
  Outcome outcome{handler.frames(), logged()};
  // The descriptor number differs each time.
  for (Entry& line : outcome.lines)
    line.second = line.second.substr(0, line.second.find(" for so"));
  return outcome;
}

Outcome receivePortions(const std::vector<Bytes>& portions) {
  PortionPair pair;
  for (const Bytes& portion : portions) pair.write(portion);
  pair.closePeer();
  return receiveAll(pair);
}

Entries linesOfFrame(size_t length) {
  const std::string number = std::to_string(length);
  return {{kDebug, "recv: len: 48"},
          {kDebug, "Received data size: " + number},
          {kDebug, "recv: length: " + number}};
}

Entries linesOfEnd(int result, int error) {
  return {{kDebug, "recv: len: " + std::to_string(result)},
          {kError, "Error 1st recv"},
          {kDebug, "ipc recv error: " + std::to_string(error)},
          {kDebug, "Notifying session 0"}};
}

Entries operator+(Entries first, const Entries& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

const Bytes kThree = frame(5, 4) + frame(6, 0) + frame(7, 9);

Entries linesOfThree() {
  return linesOfFrame(4) + linesOfFrame(0) + linesOfFrame(9) + linesOfEnd(0, 0);
}

Bytes part(const Bytes& bytes, size_t begin, size_t end) {
  return Bytes(bytes.begin() + static_cast<ptrdiff_t>(begin),
               bytes.begin() + static_cast<ptrdiff_t>(end));
}

TEST(IpcReceiverPortionsTest, FramesInOnePortionAreTakenApart) {
  const Outcome outcome = receivePortions({kThree});
  EXPECT_EQ(3u, outcome.frames.size());
  EXPECT_EQ(kThree, bytesOf(outcome.frames));
  EXPECT_EQ(linesOfThree(), outcome.lines);
}

TEST(IpcReceiverPortionsTest, FramesCutAtAnyByteAreTheSame) {
  for (size_t cut = 1; cut < kThree.size(); ++cut) {
    SCOPED_TRACE(cut);
    const Outcome outcome =
        receivePortions({part(kThree, 0, cut), part(kThree, cut, kThree.size())});
    EXPECT_EQ(3u, outcome.frames.size());
    EXPECT_EQ(kThree, bytesOf(outcome.frames));
    EXPECT_EQ(linesOfThree(), outcome.lines);
  }
}

TEST(IpcReceiverPortionsTest, FramesByteByByteAreTheSame) {
  std::vector<Bytes> portions;
  for (const unsigned char byte : kThree) portions.push_back({byte});
  const Outcome outcome = receivePortions(portions);
  EXPECT_EQ(kThree, bytesOf(outcome.frames));
  EXPECT_EQ(linesOfThree(), outcome.lines);
}

TEST(IpcReceiverPortionsTest, EndWithinAHeaderGivesTheFrameOfWhatCame) {
  for (size_t length = 1; length < kHeader; ++length) {
    SCOPED_TRACE(length);
    // After a complete frame in the same portion.
    const Bytes cut = part(frame(6, 0), 0, length);
    const Outcome outcome = receivePortions({frame(5, 4) + cut});
    Bytes filled = cut;
    filled.resize(kHeader);
    EXPECT_EQ(frame(5, 4) + filled, bytesOf(outcome.frames));
    const Entries ofCut = {{kDebug, "recv: len: " + std::to_string(length)},
                           {kDebug, "Received data size: 0"},
                           {kDebug, "recv: length: 0"}};
    EXPECT_EQ(linesOfFrame(4) + ofCut + linesOfEnd(0, 0), outcome.lines);
  }
}

TEST(IpcReceiverPortionsTest, EndWithinAPayloadEndsTheSessionBehindTheFramesBefore) {
  for (size_t received = 0; received < 9; ++received) {
    SCOPED_TRACE(received);
    const Outcome outcome =
        receivePortions({frame(5, 4) + part(frame(7, 9), 0, kHeader + received)});
    EXPECT_EQ(frame(5, 4), bytesOf(outcome.frames));
    const Entries ofCut = {{kDebug, "recv: len: 48"},
                           {kDebug, "Received data size: 9"},
                           {kError, "Unexpected data received: expected size: 9, received size: " +
                                        std::to_string(received)},
                           {kDebug, "ipc recv error: 0"},
                           {kDebug, "Notifying session 0"}};
    EXPECT_EQ(linesOfFrame(4) + ofCut, outcome.lines);
  }
}

TEST(IpcReceiverPortionsTest, MoreFramesThanOneReceiveTakesComeInOrder) {
  SocketPair pair;
  Bytes all;
  for (uint64_t id = 0; id < 400; ++id) all = all + frame(id, id % 130);
  pair.write(all.data(), all.size());
  pair.closePeer();
  const Outcome outcome = receiveAll(pair);
  EXPECT_EQ(400u, outcome.frames.size());
  EXPECT_EQ(all, bytesOf(outcome.frames));
}

TEST(IpcReceiverPortionsTest, LongFrameBetweenShortOnesIsWhole) {
  for (const size_t length : {975u, 976u, 977u, 4095u, 4096u, 4097u, 100000u}) {
    SCOPED_TRACE(length);
    SocketPair pair;
    const Bytes all = frame(5, 4) + frame(6, length) + frame(7, 9);
    pair.write(all.data(), all.size());
    pair.closePeer();
    const Outcome outcome = receiveAll(pair);
    EXPECT_EQ(3u, outcome.frames.size());
    EXPECT_EQ(all, bytesOf(outcome.frames));
    EXPECT_EQ(linesOfFrame(4) + linesOfFrame(length) + linesOfFrame(9) + linesOfEnd(0, 0),
              outcome.lines);
  }
}

// A peer that disconnects with unread data resets the connection. Data that it sent before still
// arrives.
Outcome receiveUpToReset(const Bytes& bytes) {
  SocketPair pair;
  pair.write(bytes.data(), bytes.size());
  const unsigned char unread = 0;
  if (send(pair.ours, &unread, 1, MSG_NOSIGNAL) != 1) abort();
  pair.closePeer();
  return receiveAll(pair);
}

TEST(IpcReceiverPortionsTest, ResetIsReportedBehindTheFramesBefore) {
  const Outcome outcome = receiveUpToReset(kThree);
  EXPECT_EQ(kThree, bytesOf(outcome.frames));
  EXPECT_EQ(linesOfFrame(4) + linesOfFrame(0) + linesOfFrame(9) + linesOfEnd(-1, ECONNRESET),
            outcome.lines);
}

TEST(IpcReceiverPortionsTest, ResetBehindAHeaderIsAnErrorOfThePayload) {
  const Outcome outcome = receiveUpToReset(part(frame(5, 4), 0, kHeader));
  EXPECT_TRUE(outcome.frames.empty());
  const std::string error = std::to_string(ECONNRESET);
  EXPECT_EQ((Entries{{kDebug, "recv: len: 48"},
                     {kDebug, "Received data size: 4"},
                     {kError, "Error 2nd recv: errno: " + error + "(" + strerror(ECONNRESET) + ")"},
                     {kDebug, "ipc recv error: " + error},
                     {kDebug, "Notifying session 0"}}),
            outcome.lines);
}

TEST(IpcReceiverPortionsTest, ResetWithinAHeaderIsItsEnd) {
  const Outcome outcome = receiveUpToReset(part(frame(5, 4), 0, 20));
  ASSERT_EQ(1u, outcome.frames.size());
  EXPECT_EQ(5u, outcome.frames[0].header.msgId & 0xFFFFFFFF);
  EXPECT_EQ((Entries{{kDebug, "recv: len: 20"},
                     {kDebug, "Received data size: 0"},
                     {kDebug, "recv: length: 0"}}) +
                linesOfEnd(0, 0),
            outcome.lines);
}

TEST(IpcReceiverPortionsTest, FramesBehindTheOneThatTheHandlerThrewAtAreDropped) {
  struct Throwing : RecordingHandler {
    void handleMsg(ipcMsg_t* msg) override {
      RecordingHandler::handleMsg(msg);
      throw std::runtime_error("no");
    }
  } handler;
  SocketPair pair;
  pair.write(kThree.data(), kThree.size());
  ipcReceiver(pair.ours, handler);
  EXPECT_EQ(frame(5, 4), bytesOf(handler.frames()));
}

}  // namespace
