// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "orbsim/TraceMessage.h"

namespace orbsim {

// What there is to know of the messages in proto/: constant tables, for any thread.
enum class TraceType { kBool, kUint32, kUint64, kEnum, kString, kMessage };

struct MessageTable;

struct FieldTable {
  uint32_t number;
  const char* name;
  TraceType type;
  bool repeated = false;
  const MessageTable* message = nullptr;                   // of kMessage
  const std::string& (*enumerator)(int number) = nullptr;  // of kEnum; empty when it has no name
};

struct MessageTable {
  const char* name;
  const FieldTable* fields;  // in the order of the numbers
  size_t count;
  bool oneof = false;  // its fields exclude each other

  const FieldTable* begin() const { return fields; }
  const FieldTable* end() const { return fields + count; }
};

// The message that a service takes or sends; null for a service that there is no table of.
const MessageTable* traceTable(uint32_t sdkType, Direction direction);

}  // namespace orbsim
