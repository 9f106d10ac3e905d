// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The diagnostic service on a desktop. Packets of every code go to the place that ORB_DIAG_FILE
// names (DiagPackets.h); whether they are wanted can be switched and commands can be sent through
// the socket that ORB_DIAG_SOCKET names (DiagControl.h). A packet is its 12-byte header,
// little-endian (length of the whole packet, 16 bits; code, 16 bits; microseconds since 1970, 64
// bits), and its body.
#include <diag/diag.h>

#include <chrono>
#include <cstdlib>

#include "DiagCommands.h"
#include "DiagControl.h"
#include "DiagPackets.h"

namespace {

constexpr unsigned kMaxLength = 0xFFFF;

void putLittleEndian(uint8_t* at, uint64_t value, size_t size) {
  for (size_t i = 0; i < size; ++i) at[i] = static_cast<uint8_t>(value >> (8 * i));
}

// The library never takes its registration back: the end of the process does.
struct AtExit {
  ~AtExit() { diaghost::stopControl(); }
};
const AtExit atExit;

}  // namespace

boolean Diag_LSM_Init(unsigned char*) {
  diaghost::startControl();
  return 1;
}

// Ends what Diag_LSM_Init began. Not in the header, for the library has no use for it.
extern "C" boolean Diag_LSM_DeInit() {
  diaghost::stopControl();
  return 1;
}

void diagpkt_tbl_reg(const diagpkt_user_table_type* table) { diaghost::registerCommands(table); }

boolean log_status(log_code_type) { return diaghost::packetsWanted() ? 1 : 0; }

void* log_alloc(log_code_type code, unsigned int length) {
  if (length < diaghost::kPacketHeaderSize || length > kMaxLength) return nullptr;
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
  diaghost::putPacket(bytes, static_cast<size_t>(bytes[0] | bytes[1] << 8));
  std::free(packet);
}
