// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "DiagCommands.h"

#include <algorithm>
#include <mutex>

namespace diaghost {

namespace {

struct Registry {
  std::mutex lock;
  std::vector<const diagpkt_user_table_type*> tables;
};

// Never destroyed: a command may come while the process exits.
Registry& registry() {
  static Registry* const instance = new Registry;
  return *instance;
}

using Function = void* (*)(void* request, uint16_t length);

Function find(const CommandId& id) {
  const std::lock_guard<std::mutex> lock(registry().lock);
  for (const diagpkt_user_table_type* table : registry().tables) {
    if (table->cmd_code != id.code || table->subsys_id != id.subsystem) continue;
    for (const auto* entry = table->user_table; entry != table->user_table + table->count; ++entry)
      if (id.number >= entry->cmd_code_lo && id.number <= entry->cmd_code_hi)
        return entry->func_ptr;
  }
  return nullptr;
}

}  // namespace

void registerCommands(const diagpkt_user_table_type* table) {
  if (table == nullptr) return;
  const std::lock_guard<std::mutex> lock(registry().lock);
  auto& tables = registry().tables;
  if (std::find(tables.begin(), tables.end(), table) == tables.end()) tables.push_back(table);
}

bool runCommand(const CommandId& id, std::vector<uint8_t> payload) {
  const Function function = find(id);
  if (function == nullptr) return false;
  const auto length = static_cast<uint16_t>(payload.size());
  payload.reserve(1);  // an empty payload has an address, too
  function(payload.data(), length);
  return true;
}

}  // namespace diaghost
