// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "orbsim/Frame.h"

namespace orbsim {

// Which way bytes went.
enum class Direction { kToDaemon, kToClient };

// A service's message taken apart, for people to read: plain values without a lock, owned by
// whoever has them. The messages are built without reflection, so names and types come from tables
// (TraceTables.cpp).
struct TraceField;

struct TraceMessage {
  // In the order of the numbers, those without a name last. A number, a flag, an enumerator or a
  // text that is absent is here with its default, which is what its reader takes it for.
  std::vector<TraceField> fields;
};

struct TraceEnumerator {
  int32_t number = 0;
  std::string name;  // empty: this version has none for it
};

// What stands in a field that this version does not know.
struct TraceUnknown {
  const char* type = "";  // of the encoding: varint, fixed64, bytes, group, fixed32
  std::variant<uint64_t, Blob> value;
};

using TraceValue =
    std::variant<bool, uint64_t, TraceEnumerator, std::string, TraceMessage, TraceUnknown>;

struct TraceField {
  uint32_t number = 0;
  const char* name = "";  // empty: unknown
  bool repeated = false;
  std::vector<TraceValue> values;  // one, unless repeated
};

// Names of what a blob in that direction is: the service in capitals and its message. Null for a
// service that this version does not know.
const char* traceServiceName(uint32_t sdkType);
const char* traceMessageName(Direction direction);

// Takes a blob apart as its reader would: the last of several values counts, a member of a oneof
// displaces the others, and a field of another type than expected is an unknown one. False with the
// reason when it is no message; `message` then holds what came before.
bool decodeTraceMessage(uint32_t sdkType, Direction direction, const Blob& blob,
                        TraceMessage& message, std::string& reason);

}  // namespace orbsim
