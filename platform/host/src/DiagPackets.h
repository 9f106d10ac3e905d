// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

// Whether packets are wanted, and where they go: appended to the file that ORB_DIAG_FILE names, or
// as lines on standard error when that is "-". The variable counts as it is when the library is
// loaded. Any thread may call; the state is a few atomics.
namespace diaghost {

constexpr size_t kPacketHeaderSize = 12;

// As long as nobody has switched, packets are wanted when there is a place for them.
bool packetsWanted();
void switchPackets(bool on);

void putPacket(const uint8_t* packet, size_t size);

// For people: "on, to FILE: 3 written, 0 dropped".
std::string describePackets();

}  // namespace diaghost
