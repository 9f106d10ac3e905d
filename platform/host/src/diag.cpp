// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The diagnostic service on a desktop: while ORB_DIAG_FILE names a file, packets of every code are
// wanted and are appended to it, one write each. A packet is its 12-byte header, little-endian
// (length of the whole packet, 16 bits; code, 16 bits; microseconds since 1970, 64 bits), and its
// body.
#include <diag/diag.h>
#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdlib>

namespace {

constexpr unsigned kHeaderSize = 12;
constexpr unsigned kMaxLength = 0xFFFF;

std::atomic<const diagpkt_user_table_type*> registeredTable{nullptr};

const char* packetFile() {
  const char* const path = std::getenv("ORB_DIAG_FILE");
  return path != nullptr && path[0] != '\0' ? path : nullptr;
}

void putLittleEndian(uint8_t* at, uint64_t value, size_t size) {
  for (size_t i = 0; i < size; ++i) at[i] = static_cast<uint8_t>(value >> (8 * i));
}

}  // namespace

boolean Diag_LSM_Init(unsigned char*) { return 1; }

void diagpkt_tbl_reg(const diagpkt_user_table_type* table) { registeredTable = table; }

boolean log_status(log_code_type) { return packetFile() != nullptr ? 1 : 0; }

void* log_alloc(log_code_type code, unsigned int length) {
  if (length < kHeaderSize || length > kMaxLength) return nullptr;
  auto* const packet = static_cast<uint8_t*>(std::calloc(1, length));
  if (packet == nullptr) return nullptr;
  using std::chrono::duration_cast;
  using std::chrono::microseconds;
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  putLittleEndian(packet, length, 2);
  putLittleEndian(packet + 2, code, 2);
  putLittleEndian(packet + 4, static_cast<uint64_t>(duration_cast<microseconds>(now).count()), 8);
  return packet;
}

void log_commit(void* packet) {
  if (packet == nullptr) return;
  const auto* const bytes = static_cast<const uint8_t*>(packet);
  const size_t length = static_cast<size_t>(bytes[0] | bytes[1] << 8);
  const char* const path = packetFile();
  const int fd = path != nullptr ? open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644) : -1;
  if (fd >= 0) {
    while (write(fd, bytes, length) < 0 && errno == EINTR) {
    }
    close(fd);
  }
  std::free(packet);
}
