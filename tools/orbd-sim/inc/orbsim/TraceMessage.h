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

// The direction of bytes.
enum class Direction { kToDaemon, kToClient };

// A decoded service message for people: plain values without a lock. The messages are built without
// reflection, so names and types come from tables (TraceTables.cpp).
struct TraceField;

struct TraceMessage {
  // In the order of field numbers; fields without a name are last. An absent number, flag,
  // enumerator or text has its default value, as for the receiver.
  std::vector<TraceField> fields;
};

struct TraceEnumerator {
  int32_t number = 0;
  std::string name;  // empty: no name in this version
};

// The content of a field that this version does not know.
struct TraceUnknown {
  const char* type = "";  // encoding: varint, fixed64, bytes, group, fixed32
  std::variant<uint64_t, Blob> value;
};

using TraceValue =
    std::variant<bool, uint64_t, TraceEnumerator, std::string, TraceMessage, TraceUnknown>;

struct TraceField {
  uint32_t number = 0;
  const char* name = "";  // empty: unknown
  bool repeated = false;
  std::vector<TraceValue> values;  // one value, unless the field is repeated
};

// The names for a blob in that direction: the service in capitals, and its message. Null if this
// version does not know the service.
const char* traceServiceName(uint32_t sdkType);
const char* traceMessageName(Direction direction);

// Decodes a blob like its receiver: the last of several values counts, a member of a oneof replaces
// the others, and a field with an unexpected type is an unknown field. False with the reason if it
// is not a message; `message` then has the fields before the error.
bool decodeTraceMessage(uint32_t sdkType, Direction direction, const Blob& blob,
                        TraceMessage& message, std::string& reason);

}  // namespace orbsim
