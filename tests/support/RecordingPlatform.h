// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

// The platform (log, properties, diagnostics) for tests. It records what the code under test writes
// and returns the properties that the test has set. All functions may be called from any thread.
// Its data is never destroyed, because threads may log while the process exits.
namespace recording {

struct Line {
  int priority;
  bool hasTag;  // false: the platform's default tag was asked for
  std::string tag;
  std::string text;
  pid_t tid;
};

// Removes lines, packets and property reads; properties and the diagnostic table stay.
void clear();

std::vector<Line> lines();
std::vector<std::string> texts();
bool has(const std::string& text);            // some line has exactly this text
bool hasEndingWith(const std::string& tail);  // some line ends with this text
size_t count(const std::string& text);

// Waits until a recorded line (old or new) satisfies the predicate; false if none came in time.
// The predicate must not call into this namespace.
bool waitFor(const std::function<bool(const Line&)>& predicate,
             std::chrono::milliseconds timeout = std::chrono::seconds(10));

void setProperty(const std::string& key, const std::string& value);
void clearProperties();

void setDiagListening(bool listening);
// Makes log_alloc return null.
void setDiagAllocFails(bool fails);

struct Packet {
  uint16_t code;
  std::vector<uint8_t> bytes;  // the body, without the 12-byte header
};
std::vector<Packet> packets();
bool waitForPackets(size_t count, std::chrono::milliseconds timeout = std::chrono::seconds(10));

// What the last diagpkt_tbl_reg got, copied; registrations is 0 when there was none.
struct DiagTable {
  size_t registrations;
  uint16_t delayFlag, commandCode, subsystemId, entryCount, processorId, firstCode, lastCode;
};
DiagTable diagTable();
size_t diagInitCalls();

// Calls the registered handler on the caller's thread: 0 when it returned null, 1 when it returned
// a response, -1 when none is registered. An empty request is passed as a null pointer.
int callDiagCommand(const std::vector<uint8_t>& request);

// Whether this thread is inside one of the platform's functions, where it may allocate for the
// record.
bool isWorking();

}  // namespace recording
