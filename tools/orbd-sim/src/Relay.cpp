// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "orbsim/Relay.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>
#include <utility>

#include "RelayConnection.h"

namespace orbsim {
namespace {

constexpr int kBacklog = 16;
// The interval to try again, when no event shows the right time.
constexpr int kRetryMilliseconds = 20;

}  // namespace

Relay::Relay(RelayOptions options) : mOptions(std::move(options)), mPlace(mOptions.socketPath) {}

Relay::~Relay() { stop(); }

bool Relay::start() {
  if (mThread.joinable()) return true;
  mError = SocketPlace::whyWrong(mOptions.daemonPath);
  if (mError.empty() && mOptions.daemonPath == mOptions.socketPath)
    mError = "the daemon's socket and the relay's own are the same: " + mOptions.daemonPath;
  if (!mError.empty()) return false;
  mListenFd = mWake.fd() < 0 ? -1 : mPlace.open(kBacklog);
  logPlace();
  if (mListenFd < 0) {
    mError = mWake.fd() < 0 ? "no descriptor left" : mPlace.error();
    return false;
  }
  mStopping.store(false);
  mStart = std::chrono::steady_clock::now();
  log("listening on " + mOptions.socketPath + " for the daemon on " + mOptions.daemonPath);
  try {
    mThread = std::thread(&Relay::run, this);
  } catch (const std::system_error& error) {
    mError = error.what();
    mPlace.removeSocket();
    ::close(std::exchange(mListenFd, -1));
    mPlace.leave();
    logPlace();
    return false;
  }
  return true;
}

void Relay::stop() {
  if (!mThread.joinable()) return;
  mStopping.store(true);
  mWake.wake();
  mThread.join();
  mPlace.removeSocket();
  ::close(std::exchange(mListenFd, -1));
  mPlace.leave();
  logPlace();
  log("stopped");
}

void Relay::logPlace() {
  for (const std::string& line : mPlace.takeLines()) log(line);
}

// The order: listener, wake-up, then client and daemon of each connection.
std::vector<pollfd> Relay::pollSet() const {
  std::vector<pollfd> set(2 + 2 * mConnections.size());
  set[0] = {mNoDescriptors ? -1 : mListenFd, POLLIN, 0};
  set[1] = {mWake.fd(), POLLIN, 0};
  for (size_t i = 0; i < mConnections.size(); ++i)
    mConnections[i]->addTo(set[2 + 2 * i], set[3 + 2 * i]);
  return set;
}

void Relay::run() {
  while (!mStopping.load()) {
    std::vector<pollfd> set = pollSet();
    const bool retry =
        mNoDescriptors || std::any_of(mConnections.begin(), mConnections.end(),
                                      [](const auto& each) { return each->connecting(); });
    if (::poll(set.data(), set.size(), retry ? kRetryMilliseconds : -1) < 0) continue;
    mNoDescriptors = false;
    if ((set[1].revents & POLLIN) != 0) mWake.drain();
    for (size_t i = 0; i < mConnections.size(); ++i)
      mConnections[i]->handle(set[2 + 2 * i].revents, set[3 + 2 * i].revents);
    mConnections.erase(std::remove_if(mConnections.begin(), mConnections.end(),
                                      [](const auto& each) { return each->finished(); }),
                       mConnections.end());
    if (set[0].revents != 0) acceptOne();
  }
  mConnections.clear();
}

void Relay::acceptOne() {
  const int fd = ::accept4(mListenFd, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
  if (fd < 0) {
    mNoDescriptors = errno == EMFILE || errno == ENFILE || errno == ENOMEM;
    return;
  }
  auto connection = std::make_unique<RelayConnection>(fd, ++mAccepted, mOptions, mStart);
  if (!connection->finished()) mConnections.push_back(std::move(connection));
}

void Relay::log(const std::string& line) const {
  if (mOptions.log) mOptions.log(line);
}

}  // namespace orbsim
