// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// A relay with the test at both ends.

#pragma once

#include <algorithm>
#include <random>
#include <utility>

#include "OrbdSimClient.h"
#include "orbsim/Relay.h"

namespace orbsimtest {

using orbsim::Direction;
using orbsim::RecordedEvent;
using orbsim::Relay;
using orbsim::RelayOptions;

inline Blob randomBytes(size_t size) {
  std::mt19937 random(static_cast<uint32_t>(size));
  Blob bytes(size);
  for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random());
  return bytes;
}

// One end of a connection, with blocking calls.
class End {
 public:
  explicit End(int fd = -1) : mFd(fd) {}
  End(End&& other) noexcept : mFd(std::exchange(other.mFd, -1)) {}
  End& operator=(End&& other) noexcept {
    close();
    mFd = std::exchange(other.mFd, -1);
    return *this;
  }
  ~End() { close(); }

  int fd() const { return mFd; }
  void close() {
    if (mFd >= 0) ::close(mFd);
    mFd = -1;
  }
  void shutdown(int how) const { ASSERT_EQ(0, ::shutdown(mFd, how)); }
  // The number of accepted bytes.
  size_t send(const Blob& bytes, size_t piece = 100000) const {
    size_t sent = 0;
    while (sent < bytes.size()) {
      const size_t size = std::min(piece, bytes.size() - sent);
      const ssize_t result = ::send(mFd, bytes.data() + sent, size, MSG_NOSIGNAL);
      if (result < 0) break;
      sent += static_cast<size_t>(result);
    }
    return sent;
  }
  Blob read(size_t size) const {
    Blob bytes(size);
    const ssize_t got = ::recv(mFd, bytes.data(), size, MSG_WAITALL);
    bytes.resize(got > 0 ? static_cast<size_t>(got) : 0);
    return bytes;
  }
  Blob readToEnd() const {
    Blob all, part;
    while (!(part = read(4096)).empty()) all.insert(all.end(), part.begin(), part.end());
    return all;
  }

 private:
  int mFd;
};

inline sockaddr_un addressOf(const std::string& path) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
  return address;
}

inline End connectTo(const std::string& path, int flags = 0) {
  End end(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | flags, 0));
  const sockaddr_un address = addressOf(path);
  if (::connect(end.fd(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0)
    end.close();
  return end;
}

// A relay between the socket of a daemon, which the test plays, and a client. Used on the test's
// thread.
class OrbdSimRelayTest : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/orbd-sim-test-XXXXXX";
    ASSERT_NE(nullptr, ::mkdtemp(pattern));
    mDirectory = pattern;
    listen(16);
    startRelay();
  }
  void TearDown() override {
    mRelay.reset();
    std::filesystem::remove_all(mDirectory);
  }

  std::string daemonPath() const { return mDirectory + "/daemon"; }
  std::string path() const { return mDirectory + "/orb"; }

  void listen(int backlog) {
    std::filesystem::remove(daemonPath());
    mListener = End(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const sockaddr_un address = addressOf(daemonPath());
    ASSERT_EQ(0,
              ::bind(mListener.fd(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)));
    ASSERT_EQ(0, ::listen(mListener.fd(), backlog));
  }
  void startRelay() {
    mRelay.reset();
    RelayOptions options;
    options.socketPath = path();
    options.daemonPath = daemonPath();
    options.log = mLog.sink();
    options.trace = [this](const orbsim::TraceItem& item) { mTrace.sink()(traceText(item)); };
    options.record = [this](const RecordedEvent& event) { mEvents.add(event); };
    mRelay = std::make_unique<Relay>(options);
    ASSERT_TRUE(mRelay->start()) << mRelay->error();
  }
  End accept() const { return End(::accept4(mListener.fd(), nullptr, nullptr, SOCK_CLOEXEC)); }
  void connectBoth() {
    mClient = connectTo(path());
    ASSERT_LE(0, mClient.fd());
    mDaemon = accept();
    ASSERT_LE(0, mDaemon.fd());
  }
  Blob recorded(Direction direction) {
    Blob all;
    for (const RecordedEvent& event : mEvents.all()) {
      if (event.kind == RecordedEvent::Kind::kBytes && event.direction == direction)
        all.insert(all.end(), event.bytes.begin(), event.bytes.end());
    }
    return all;
  }

  std::string mDirectory;
  LogLines mLog;
  LogLines mTrace;
  Recorder<RecordedEvent> mEvents;
  End mListener, mClient, mDaemon;
  std::unique_ptr<Relay> mRelay;
};

}  // namespace orbsimtest
