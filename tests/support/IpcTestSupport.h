// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

// What the tests of the IPC layers share: their log lines without the head, and a few descriptors.

#include <android/log.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "Descriptors.h"
#include "ProcessUtils.h"
#include "Recorder.h"
#include "RecordingPlatform.h"

namespace ipctest {

constexpr int kDebug = ANDROID_LOG_DEBUG;
constexpr int kInfo = ANDROID_LOG_INFO;
constexpr int kError = ANDROID_LOG_ERROR;
constexpr std::chrono::seconds kPatience(10);

using Entry = std::pair<int, std::string>;  // level and message
using Entries = std::vector<Entry>;

// The message of a line of these layers, which reads "|ORB|File::function:line message".
inline bool messageOf(const recording::Line& line, Entry& entry) {
  if (line.text.compare(0, 5, "|ORB|") != 0) return false;
  const size_t blank = line.text.find(' ');
  if (blank == std::string::npos) return false;
  entry = {line.priority, line.text.substr(blank + 1)};
  return true;
}

inline Entries logged() {
  Entries entries;
  Entry entry;
  for (const auto& line : recording::lines()) {
    if (messageOf(line, entry)) entries.push_back(entry);
  }
  return entries;
}

// The sources ("File::function") of the lines with this message.
inline std::vector<std::string> sourcesOf(const std::string& message) {
  std::vector<std::string> sources;
  Entry entry;
  for (const auto& line : recording::lines()) {
    if (!messageOf(line, entry) || entry.second != message) continue;
    const std::string head = line.text.substr(0, line.text.find(' '));
    sources.push_back(head.substr(5, head.rfind(':') - 5));
  }
  return sources;
}

inline size_t countLogged(int level, const std::string& message) {
  const Entries entries = logged();
  return static_cast<size_t>(std::count(entries.begin(), entries.end(), Entry(level, message)));
}

inline bool hasLogged(int level, const std::string& message) {
  return countLogged(level, message) > 0;
}

inline bool waitLogged(int level, const std::string& message) {
  return recording::waitFor([&](const recording::Line& line) {
    Entry entry;
    return messageOf(line, entry) && entry == Entry(level, message);
  });
}

inline bool isRegistered(unsigned long peer, unsigned long session) {
  const auto globals = getProcessUtilsGlobals();
  const ScopedLock<SharedMutex> lock(globals->mLock);
  const bool socket = globals->mSockets.count({peer, session}) > 0;
  const bool thread = globals->mReceiverThreads.count({peer, session}) > 0;
  return socket || thread;
}

// A connected pair of sockets. The code under test gets `ours`; the peer's end is closed here.
struct SocketPair {
  SocketPair() {
    int fds[2] = {-1, -1};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, fds) != 0) return;
    ours = fds[0];
    peer = fds[1];
  }
  SocketPair(const SocketPair&) = delete;
  SocketPair& operator=(const SocketPair&) = delete;
  ~SocketPair() { closePeer(); }

  void closePeer() {
    if (peer >= 0) close(peer);
    peer = -1;
  }
  void write(const void* data, size_t size) const {
    if (::send(peer, data, size, MSG_NOSIGNAL) != static_cast<ssize_t>(size)) abort();
  }
  std::vector<unsigned char> read(size_t size) const {
    std::vector<unsigned char> bytes(size);
    const ssize_t got = recv(peer, bytes.data(), size, MSG_WAITALL);
    bytes.resize(got > 0 ? static_cast<size_t>(got) : 0);
    return bytes;
  }

  int ours = -1;
  int peer = -1;
};

// Keeps what a receiver passes on.
class RecordingHandler : public ProcessHandler {
 public:
  struct Frame {
    ipcMsg_t header;
    std::vector<unsigned char> payload;
  };

  void handleMsg(ipcMsg_t* msg) override {
    mFrames.add({*msg, {msg->payload(), msg->payload() + msg->payloadLength}});
  }
  void handleSessionEnd(unsigned int sessionId) override {
    mCalls.add("session " + std::to_string(sessionId));
  }
  void handleReceiverEnd(int sockFd) override { mCalls.add("receiver " + std::to_string(sockFd)); }

  bool waitForFrames(size_t count) { return mFrames.waitForCount(count); }
  bool waitForEnd() const { return threadSemaphore()->decreaseFor(kPatience); }
  std::vector<Frame> frames() { return mFrames.all(); }
  // The calls that report ends, in order.
  std::vector<std::string> calls() { return mCalls.all(); }

 private:
  Recorder<Frame> mFrames;
  Recorder<std::string> mCalls;
};

}  // namespace ipctest
