// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <diag/diag.h>

#include <cstdint>
#include <vector>

// The commands that the process has registered. Any thread may call; a lock guards the list of
// tables and is not held while a command runs.
namespace diaghost {

struct CommandId {
  uint16_t code;
  uint16_t subsystem;
  uint16_t number;
};

void registerCommands(const diagpkt_user_table_type* table);

// Runs the command on the calling thread; false when no registered range has it. Its response is
// not passed on: there is nobody who could free it.
bool runCommand(const CommandId& id, std::vector<uint8_t> payload);

}  // namespace diaghost
