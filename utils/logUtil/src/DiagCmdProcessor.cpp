// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "DiagCmdProcessor.h"

#include <diag/diag.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

#include "Bytes.h"
#include "PlatformLog.h"

namespace {

constexpr uint16_t kLogCode = 0x1E15;
constexpr size_t kHeaderSize = 12;  // filled by log_alloc
constexpr size_t kTextSize = 512;   // zero-padded, not terminated when full

constexpr size_t kReservedSize = 4;

const diagpkt_user_table_entry_type kCommands[] = {
    {0x0089, 0x0089, DiagCmdProcessor::diagCmdHandler},
};
const diagpkt_user_table_type kCommandTable = {0, 0x00FF, 0x0012, 1, 0, kCommands};

}  // namespace

NeverDestroyed<std::shared_ptr<DiagCmdProcessor>> DiagCmdProcessor::mSelf;

std::shared_ptr<DiagCmdProcessor> DiagCmdProcessor::getInstance() {
  // Not std::call_once, whose C function underneath need not let an exception through.
  static const bool created = (mSelf.get().reset(new DiagCmdProcessor), true);
  (void)created;
  return mSelf.get();
}

void DiagCmdProcessor::initialize(Handler handler) {
  auto exchanged = std::make_shared<const Handler>(std::move(handler));
  {
    const LockGuard lock(mMutex);
    mHandler.swap(exchanged);
  }
  Diag_LSM_Init(nullptr);
  diagpkt_tbl_reg(&kCommandTable);
}

void* DiagCmdProcessor::diagCmdHandler(void* request, unsigned short length) {
  if (request == nullptr || length == 0) return nullptr;
  const std::shared_ptr<DiagCmdProcessor> self = getInstance();
  std::shared_ptr<const Handler> current;
  {
    const LockGuard lock(self->mMutex);
    current = self->mHandler;
  }
  std::vector<unsigned char> response;
  // Without a handler this throws: registering the command before initialize() is a programming
  // error.
  const bool ok = (*current)(static_cast<unsigned char*>(request), length, response);
  PLATFORM_LOG(DEBUG, "Orb-Diag: retVal: %d, size: %d", ok ? 1 : 0,
               static_cast<int>(response.size()));
  return nullptr;
}

bool DiagCmdProcessor::isListening() { return log_status(kLogCode) != 0; }

void DiagCmdProcessor::writeToDiag(std::string_view entry) {
  if (isListening()) sendPacket(entry);
}

void DiagCmdProcessor::sendPacket(std::string_view entry) {
  void* const packet = log_alloc(kLogCode, kHeaderSize + kReservedSize + kTextSize);
  if (packet == nullptr) return;
  auto* const reserved = static_cast<uint8_t*>(packet) + kHeaderSize;
  std::memset(reserved, 0, kReservedSize);
  uint8_t* const text = reserved + kReservedSize;
  const size_t size = std::min(entry.size(), kTextSize);
  copyBytes(text, entry.data(), size);
  zeroBytes(text + size, kTextSize - size);
  log_commit(packet);
}
