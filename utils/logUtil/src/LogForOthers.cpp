// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// What Log offers and the library itself never calls: lines of the data path and of modules, and
// the hook library's settings.
#include <cstdio>
#include <string_view>

#include "DiagCmdProcessor.h"
#include "Log.h"
#include "LogTag.h"

namespace {

constexpr size_t kPersistSettingSize = 50;

}  // namespace

void Log::logModuleDebug(const char* format, ...) {
  const ErrnoKeeper keeper;
  constexpr std::string_view kHead = "| orbLog | ";
  char text[LogLine::kBufferSize] = "| orbLog | ";
  va_list args;
  va_start(args, format);
  std::vsnprintf(text + kHead.size(), sizeof text - kHead.size(), format, args);
  va_end(args);
  __android_log_print(ANDROID_LOG_DEBUG, LogTag::get(), "%s", text);
}

void Log::dMapLog(int level, const std::string& message) {
  if (home.isForked()) return;
  const ErrnoKeeper keeper;
  const Writer writer(mutex);
  if (dmapSuppressed.load()) return;
  if (dmapDebugSuppressed.load() && level == ANDROID_LOG_DEBUG) return;
  const AlogFunction alog = orb_alog_fn.load();
  if (alog != nullptr) alog(level, "DMAP", "%s", message.c_str());
  recordDump.requestDumpWhenFull();
  const bool encrypted = encryptedLog.isEnabled();
  if (!encrypted && !DiagCmdProcessor::isListening()) return;
  RecordStamp record;
  record.stamp(level, true);
  char entry[LogLine::kBufferSize];
  const size_t size = record.formatEntry(message, entry);
  // Unlike the record of a line, an encrypted one of the data path is not sent as plain text, too.
  if (encrypted) {
    encryptedLog.encryptLogMsg({entry, size});
  } else if (size > 0) {
    DiagCmdProcessor::sendPacket({entry, size});
  }
}

void Log::writeToDiag(const std::string& entry) { DiagCmdProcessor::writeToDiag(entry); }

bool Log::getPersistSetting(unsigned char& setting, std::vector<unsigned char>& out) {
  const GetPersistSettingFunction get = orbGetPersistSetting.load();
  if (get == nullptr) return false;
  out.resize(kPersistSettingSize);
  const int size = get(&setting, out.data());
  if (size >= 1) out.resize(static_cast<size_t>(size));
  return true;
}
