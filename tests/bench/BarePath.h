// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <thread>
#include <utility>
#include <vector>

#include "BareQueue.h"
#include "Countdown.h"

// The path of a request and its answer without the library: the same bytes over a socket pair, the
// same hand-overs between threads, nothing else. request() posts to a worker. The worker sends to a
// peer, the peer sends the answer to a receiver, and the receiver counts it. Used by one thread,
// which waits on `answers`.
class BarePath {
 public:
  using Bytes = std::vector<uint8_t>;
  static constexpr size_t kHeader = 48;

  BarePath(Bytes request, Bytes answer) : mRequest(std::move(request)), mAnswer(std::move(answer)) {
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, mSockets) != 0) return;
    mWorker = std::thread([this] { work(); });
    mPeer = std::thread([this] { serve(); });
    mReceiver = std::thread([this] { receive(); });
  }
  BarePath(const BarePath&) = delete;
  BarePath& operator=(const BarePath&) = delete;
  ~BarePath() {
    mQueue.post(false);
    for (const int fd : mSockets) shutdown(fd, SHUT_RDWR);
    for (std::thread* thread : {&mWorker, &mPeer, &mReceiver}) thread->join();
    for (const int fd : mSockets) close(fd);
  }

  void request() { mQueue.post(true); }
  // The peer sends this without a request.
  void indication() { sendAll(mSockets[1], mAnswer); }

  Countdown answers;

 private:
  static bool sendAll(int fd, const Bytes& bytes) {
    return send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(bytes.size());
  }
  // Reads a frame as the library does: first the header, then as many bytes as the header says.
  static bool receiveFrame(int fd, size_t size) {
    uint8_t header[kHeader];
    if (recv(fd, header, kHeader, MSG_WAITALL) != static_cast<ssize_t>(kHeader)) return false;
    Bytes payload(size - kHeader);
    return recv(fd, payload.data(), payload.size(), MSG_WAITALL) ==
           static_cast<ssize_t>(payload.size());
  }
  void work() {
    while (mQueue.take() && sendAll(mSockets[0], mRequest)) {
    }
  }
  void serve() {
    while (receiveFrame(mSockets[1], mRequest.size()) && sendAll(mSockets[1], mAnswer)) {
    }
  }
  void receive() {
    while (receiveFrame(mSockets[0], mAnswer.size())) answers.one();
  }

  const Bytes mRequest;
  const Bytes mAnswer;
  int mSockets[2] = {-1, -1};  // ours, the peer's
  BareQueue<bool> mQueue;
  std::thread mWorker, mPeer, mReceiver;
};
