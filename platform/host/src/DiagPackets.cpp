// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "DiagPackets.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "DiagText.h"
#include "Environment.h"
#include "UniqueFd.h"

namespace diaghost {

namespace {

constexpr size_t kReservedSize = 4;  // a packet's text begins behind it
constexpr char kTerminal[] = "-";

enum class Switch { Untouched, On, Off };
std::atomic<Switch> position{Switch::Untouched};
std::atomic<unsigned long> written{0};
std::atomic<unsigned long> dropped{0};

const char* const namedFile = host::keptVariable("ORB_DIAG_FILE");

// Null for nowhere. Who switches packets on without naming a file sees them on the terminal.
const char* destination() {
  if (namedFile != nullptr && namedFile[0] != '\0') return namedFile;
  return position == Switch::On ? kTerminal : nullptr;
}

bool writeWhole(int fd, const void* bytes, size_t size) {
  ssize_t done = -1;
  do {
    done = write(fd, bytes, size);
  } while (done < 0 && errno == EINTR);
  return done == static_cast<ssize_t>(size);
}

bool appendToFile(const char* path, const uint8_t* packet, size_t size) {
  const UniqueFd fd(open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644));
  static std::atomic<bool> told{false};
  if (fd.get() < 0 && !told.exchange(true)) host::refuse("ORB_DIAG_FILE", path, strerror(errno));
  return fd.get() >= 0 && writeWhole(fd.get(), packet, size);
}

// One line, one write: lines of several threads do not mix. What could steer a terminal is masked.
bool showOnTerminal(const uint8_t* packet, size_t size) {
  char head[8];
  std::snprintf(head, sizeof head, "%04X ", static_cast<unsigned>(packet[2] | packet[3] << 8));
  std::string line(head);
  constexpr size_t kStart = kPacketHeaderSize + kReservedSize;
  if (size > kStart) {
    const auto* const text = reinterpret_cast<const char*>(packet + kStart);
    line += maskControls({text, strnlen(text, size - kStart)});
  }
  line += '\n';
  return writeWhole(STDERR_FILENO, line.data(), line.size());
}

}  // namespace

bool packetsWanted() {
  const Switch now = position;
  return now == Switch::On || (now == Switch::Untouched && destination() != nullptr);
}

void switchPackets(bool on) { position = on ? Switch::On : Switch::Off; }

void putPacket(const uint8_t* packet, size_t size) {
  const char* const to = destination();
  const bool done =
      to != nullptr && (std::strcmp(to, kTerminal) == 0 ? showOnTerminal(packet, size)
                                                        : appendToFile(to, packet, size));
  ++(done ? written : dropped);
}

std::string describePackets() {
  const char* const to = destination();
  std::string text = packetsWanted() ? "on" : "off";
  text += ", to ";
  text += to == nullptr ? "nowhere" : std::strcmp(to, kTerminal) == 0 ? "standard error" : to;
  return text + ": " + std::to_string(written) + " written, " + std::to_string(dropped) +
         " dropped";
}

}  // namespace diaghost
