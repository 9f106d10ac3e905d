// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "HostileDaemon.h"

#include <poll.h>

namespace {

bool readable(int fd, HostileDaemon::Timeout timeout) {
  pollfd entry = {fd, POLLIN, 0};
  return poll(&entry, 1, static_cast<int>(timeout.count())) == 1;
}

}  // namespace

void HostileDaemon::stopListening(bool remove) {
  mListener.reset();
  if (remove) unlink(hostile::kSocketPath);
}

bool HostileDaemon::accept(Timeout timeout) {
  if (!mListener || !readable(mListener->get(), timeout)) return false;
  auto connection = std::make_unique<UniqueFd>(
      accept4(mListener->get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
  if (connection->get() < 0) return false;
  mConnections.push_back(std::move(connection));
  return true;
}

void HostileDaemon::serve(Timeout timeout) {
  if (!accept(timeout)) return;
  const int fd = mConnections.back()->get();
  const int32_t id = mNextId++;
  const auto say = [fd](const Bytes& bytes) {
    return ::send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL) > 0;
  };
  uint8_t answer[hostile::kResponseSize];
  if (say(hostile::record(hostile::kInit, id)) && readable(fd, timeout) &&
      recv(fd, answer, sizeof answer, 0) > 0 && say(hostile::record(hostile::kComplete, id)))
    readable(fd, timeout);
}

int HostileDaemon::pick(uint8_t connection) const {
  return mConnections.empty() ? -1 : connection % static_cast<int>(mConnections.size());
}

void HostileDaemon::send(uint8_t connection, const Bytes& bytes) {
  const int index = pick(connection);
  if (index < 0 || bytes.empty()) return;
  // If the client does not read and its buffer is full, the rest of the bytes is lost.
  (void)::send(mConnections[static_cast<size_t>(index)]->get(), bytes.data(), bytes.size(),
               MSG_NOSIGNAL | MSG_DONTWAIT);
}

void HostileDaemon::drain(uint8_t connection, Timeout timeout) {
  const int index = pick(connection);
  if (index < 0) return;
  const int fd = mConnections[static_cast<size_t>(index)]->get();
  if (!readable(fd, timeout)) return;
  uint8_t buffer[4096];
  while (recv(fd, buffer, sizeof buffer, MSG_DONTWAIT) > 0) {
  }
}

void HostileDaemon::close(uint8_t connection) {
  const int index = pick(connection);
  if (index >= 0) mConnections.erase(mConnections.begin() + index);
}

void HostileDaemon::shutDown(uint8_t connection, int how) {
  const int index = pick(connection);
  if (index >= 0) shutdown(mConnections[static_cast<size_t>(index)]->get(), how);
}
