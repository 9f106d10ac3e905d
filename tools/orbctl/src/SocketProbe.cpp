// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orbctl/SocketProbe.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "UniqueFd.h"
#include "orbctl/PendingConnection.h"
#include "orbtool/SocketAddress.h"

namespace orbctl {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int32_t kInit = 1, kResponse = 2, kComplete = 3;
constexpr size_t kRecordSize = 8;
// LCE's endpoint, because the daemon knows it. No frame follows, so the daemon does no other work
// for it.
constexpr int32_t kEndpoint = 105;
constexpr char kNextLog[] = "the daemon runs but does not work: see its log, restart it, try again";

struct Record {
  int32_t type = 0;
  uint32_t sessionId = 0;
};

SocketFinding found(SocketState state, std::string reason, std::string next) {
  return {state, std::move(reason), std::move(next), {}, 0};
}

SocketFinding failed(const char* what, int error) {
  return found(SocketState::kFailed, std::string(what) + ": " + std::strerror(error),
               "fix the cause in the message, try again");
}

std::string folderOf(const std::string& path) {
  const size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

SocketFinding noPermission(const std::string& place) {
  return found(SocketState::kNoPermission, "no permission for " + place,
               "run as a user or group that may use it: ls -ld " + place);
}

// The result without a connection; kWell if there is a socket.
SocketFinding lookAtPath(const std::string& path) {
  struct stat status = {};
  const std::string folder = folderOf(path);
  if (stat(folder.c_str(), &status) != 0) {
    if (errno == EACCES) return noPermission(folder);
    return found(SocketState::kNoFolder, folder + " does not exist",
                 "start the daemon; on a desktop: orb-sandbox with orbd-sim");
  }
  if (!S_ISDIR(status.st_mode))
    return found(SocketState::kNoFolder, folder + " is no folder", "check what is at this path");
  if (stat(path.c_str(), &status) != 0) {
    if (errno == EACCES) return noPermission(folder);
    return found(SocketState::kNoSocket, path + " does not exist",
                 "the daemon does not run, or serves another path: start it");
  }
  if (!S_ISSOCK(status.st_mode))
    return found(SocketState::kNotASocket, path + " is no socket", "remove it, restart the daemon");
  return found(SocketState::kWell, "", "");
}

// Waits for readable data. Returns 1, 0 after the timeout, or -1 with errno.
int waitReadable(int fd, Clock::time_point end) {
  for (;;) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
    pollfd waited = {fd, POLLIN, 0};
    const int ready = poll(&waited, 1, left > 0 ? static_cast<int>(left) : 0);
    if (ready >= 0 || errno != EINTR) return ready;
  }
}

SocketFinding connectionFailed(const std::string& path, int error) {
  switch (error) {
    case ECONNREFUSED:
      return found(SocketState::kRefused, "nobody listens on " + path,
                   "the daemon has ended and left its socket: start it");
    case EAGAIN:
      return found(SocketState::kNotAccepting, "the queue of connections is full",
                   "the daemon does not accept connections: see its log, restart it");
    case EACCES:
    case EPERM:
      return noPermission(path);
    case ENOENT:
      return found(SocketState::kNoSocket, path + " was just removed", "try again");
    case EPROTOTYPE:
      return found(SocketState::kNotASocket, path + " is a socket of another type",
                   "check which process made it, restart the daemon");
    default:
      return failed("connect", error);
  }
}

// A full queue can be temporary, and its end cannot be polled, so connect is repeated with pauses.
// kWell if the connection is accepted or waits in the queue.
SocketFinding connectTo(int fd, const std::string& path, Clock::time_point end) {
  if (path.size() > orbtool::SocketAddress::kMaxPath) return failed("socket path", ENAMETOOLONG);
  const orbtool::SocketAddress address(path);
  for (;;) {
    if (address.connect(fd) == 0) return found(SocketState::kWell, "", "");
    const int error = errno;
    if ((error != EAGAIN && error != EINTR) || Clock::now() >= end)
      return connectionFailed(path, error);
    poll(nullptr, 0, 20);
  }
}

// Why nothing came. If the connection still waits in the listener's queue, the daemon has not
// accepted it.
SocketFinding nothingCame(int fd, const char* step) {
  if (isPending(fd) == Pending::kYes)
    return found(SocketState::kNotAccepting,
                 "the connection waits in the queue: the daemon listens and does not accept",
                 "the daemon hangs: see its log, restart it");
  return found(SocketState::kSilent,
               std::string("the connection was accepted, but ") + step + " does not come",
               kNextLog);
}

// Reads like the library: one read is one record. Returns kWell with the record, or the problem.
SocketFinding readRecord(int fd, Clock::time_point end, int32_t type, const char* step,
                         Record& record) {
  const int ready = waitReadable(fd, end);
  if (ready < 0) return failed("poll", errno);
  if (ready == 0) return nothingCame(fd, step);
  std::vector<uint8_t> bytes(1024);
  ssize_t size = 0;
  do {
    size = recv(fd, bytes.data(), bytes.size(), 0);
  } while (size < 0 && errno == EINTR);
  if (size <= 0) {
    return found(SocketState::kClosed,
                 std::string("the daemon closed the connection instead of sending ") + step,
                 kNextLog);
  }
  bytes.resize(static_cast<size_t>(size));
  SocketFinding finding = found(SocketState::kWrongRecord, "", "");
  finding.next = "the server of this socket is not the daemon, or has another version";
  finding.bytes = bytes;
  if (bytes.size() != kRecordSize) {
    finding.reason = std::string(step) + " has " + std::to_string(bytes.size()) + " bytes, not 8";
    return finding;
  }
  std::memcpy(&record.type, bytes.data(), sizeof record.type);
  std::memcpy(&record.sessionId, bytes.data() + 4, sizeof record.sessionId);
  if (record.type != type) {
    finding.reason = std::string(step) + " is of type " + std::to_string(record.type) + ", not " +
                     std::to_string(type);
    return finding;
  }
  return found(SocketState::kWell, "", "");
}

SocketFinding shakeHands(int fd, std::chrono::milliseconds timeout) {
  Record init, complete;
  SocketFinding finding =
      readRecord(fd, Clock::now() + timeout, kInit, "the first record (init)", init);
  if (finding.state != SocketState::kWell) return finding;
  int32_t response[3] = {kResponse, 0, kEndpoint};
  std::memcpy(&response[1], &init.sessionId, sizeof init.sessionId);
  // If the daemon has closed the connection, the following read reports it.
  (void)send(fd, response, sizeof response, MSG_NOSIGNAL);
  finding =
      readRecord(fd, Clock::now() + timeout, kComplete, "the last record (complete)", complete);
  if (finding.state != SocketState::kWell) return finding;
  if (complete.sessionId != init.sessionId) {
    finding =
        found(SocketState::kWrongRecord,
              "the last record (complete) is for session " + std::to_string(complete.sessionId) +
                  ", the first was for session " + std::to_string(init.sessionId),
              "the server of this socket is not the daemon, or has another version");
    finding.bytes.resize(kRecordSize);
    std::memcpy(finding.bytes.data(), &complete.type, sizeof complete.type);
    std::memcpy(finding.bytes.data() + 4, &complete.sessionId, sizeof complete.sessionId);
    return finding;
  }
  finding.reason = "handshake done";
  finding.sessionId = init.sessionId;
  return finding;
}

}  // namespace

std::string daemonSocket() {
  const char* const libraries = std::getenv("LD_PRELOAD");
  const char* const path = std::getenv("ORB_SOCKET");
  const bool redirected = libraries != nullptr && path != nullptr && *path != '\0' &&
                          std::strstr(libraries, "/liborb_redirect.so") != nullptr;
  return redirected ? path : kSocketPath;
}

const char* wordOf(SocketState state) {
  switch (state) {
    case SocketState::kNoFolder:
      return "no-folder";
    case SocketState::kNoSocket:
      return "no-socket";
    case SocketState::kNotASocket:
      return "not-a-socket";
    case SocketState::kNoPermission:
      return "no-permission";
    case SocketState::kRefused:
      return "refused";
    case SocketState::kNotAccepting:
      return "not-accepting";
    case SocketState::kSilent:
      return "silent";
    case SocketState::kClosed:
      return "closed";
    case SocketState::kWrongRecord:
      return "wrong-handshake";
    case SocketState::kWell:
      return "well";
    case SocketState::kFailed:
      break;
  }
  return "failed";
}

SocketFinding probeSocket(const std::string& path, std::chrono::milliseconds timeout) {
  SocketFinding finding = lookAtPath(path);
  if (finding.state != SocketState::kWell) return finding;
  const UniqueFd fd(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  if (fd.get() < 0) return failed("socket", errno);
  finding = connectTo(fd.get(), path, Clock::now() + timeout);
  return finding.state == SocketState::kWell ? shakeHands(fd.get(), timeout) : finding;
}

std::string hexText(const std::vector<uint8_t>& bytes) {
  constexpr size_t kMost = 32;
  std::string text, words;
  char part[16];
  for (size_t i = 0; i < bytes.size() && i < kMost; ++i) {
    std::snprintf(part, sizeof part, i == 0 ? "%02x" : " %02x", bytes[i]);
    text += part;
  }
  if (bytes.size() > kMost) text += " ...";
  for (size_t i = 0; i + 4 <= bytes.size() && i < kMost; i += 4) {
    int32_t word = 0;
    std::memcpy(&word, bytes.data() + i, sizeof word);
    words += (words.empty() ? "" : ", ") + std::to_string(word);
  }
  return words.empty() ? text : text + " (words " + words + ")";
}

}  // namespace orbctl
