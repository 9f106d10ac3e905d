// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "orbsim/TraceMessage.h"

namespace orbsim {

// Data about the messages in proto/: constant tables, for any thread.
enum class TraceType { kBool, kUint32, kUint64, kEnum, kString, kMessage };

struct MessageTable;

struct FieldTable {
  uint32_t number;
  const char* name;
  TraceType type;
  bool repeated = false;
  const MessageTable* message = nullptr;  // for kMessage
  const std::string& (*enumerator)(int number) =
      nullptr;  // for kEnum; empty text if it has no name
};

struct MessageTable {
  const char* name;
  const FieldTable* fields;  // in the order of field numbers
  size_t count;
  bool oneof = false;  // at most one of its fields is set

  const FieldTable* begin() const { return fields; }
  const FieldTable* end() const { return fields + count; }
};

// The message that a service receives or sends; null for a service without a table.
const MessageTable* traceTable(uint32_t sdkType, Direction direction);

}  // namespace orbsim
