// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "EncryptedLog.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <new>
#include <utility>

#include "CryptoUtil.h"
#include "ExistingLogFiles.h"
#include "LogLine.h"
#include "LogTag.h"

namespace {

constexpr char kMainTag[] = "orb";
constexpr char kMainDirectory[] = "/data/vendor/orb_logs/main";
constexpr char kOtherDirectory[] = "/data/vendor/orb_logs/other";

constexpr uint64_t kMinRecords = 3000;
constexpr uint64_t kMaxRecords = 30000;
constexpr uint8_t kMinFiles = 3;
constexpr uint8_t kMaxFiles = 10;

// A record is its length (16 bits, little-endian, without itself), IV, tag and ciphertext.
constexpr size_t kLengthSize = 2;
constexpr size_t kRecordHeadSize = kLengthSize + GcmCipher::kIvSize + GcmCipher::kTagSize;

std::atomic<bool> cryptoGone{false};

}  // namespace

EncryptedLog::Secret::~Secret() { wipe(*this); }

void EncryptedLog::noteCryptoGone() { cryptoGone = true; }

bool EncryptedLog::start(const Settings& settings) {
  if (!recordCipher.setKey(settings.aesKey.data())) return false;
  logPermsEnabled = settings.logPermsEnabled;
  wrappedKey = settings.wrappedKey;
  recordsPerFile = std::clamp(settings.recordsPerFile, kMinRecords, kMaxRecords);
  maxFiles = std::clamp(settings.maxFiles, kMinFiles, kMaxFiles);
  recordsInFile = 0;
  fileTag = getFileTag();
  fileIndex = ExistingLogFiles(getLogFilePath(), fileTag, maxFiles).checkExistingFiles();
  createNewlogFileName();
  logFile.start();
  encryptionEnabled = true;
  return true;
}

void EncryptedLog::stop() {
  encryptionEnabled = false;
  recordCipher.clear();
  logFile.close();
  fullFile.close();
}

void EncryptedLog::encryptLogMsg(std::string_view entry) {
  if (cryptoGone.load()) return;
  // The record that finds the file full starts the next file, but still goes to this one. Without
  // memory for the next file, the record is dropped.
  const bool full = recordsInFile > static_cast<int64_t>(recordsPerFile);
  if (full && !nextLogFile()) return;
  const size_t length = GcmCipher::kIvSize + GcmCipher::kTagSize + entry.size();
  uint8_t record[kRecordHeadSize + LogLine::kBufferSize];
  if (kLengthSize + length > sizeof record) return;
  record[0] = static_cast<uint8_t>(length);
  record[1] = static_cast<uint8_t>(length >> 8);
  uint8_t* const iv = record + kLengthSize;
  uint8_t* const tag = iv + GcmCipher::kIvSize;
  if (recordCipher.newIv(iv) && recordCipher.seal(entry, iv, record + kRecordHeadSize, tag)) {
    writeToFile(record, kLengthSize + length, full ? fullFile : logFile);
  }
  if (full) fullFile.close();
  ++recordsInFile;
}

// The last file gets the index maxFiles in its name. Then the file with index 0 is removed, and the
// next file gets index 1.
bool EncryptedLog::nextLogFile() {
  std::string first;
  EncryptedLogFile next;
  try {
    first = logFileName(0);
    next = EncryptedLogFile(logFileName(fileIndex + 1), wrappedKey);
  } catch (const std::bad_alloc&) {
    return false;  // with nothing changed
  }
  recordsInFile = 0;
  ++fileIndex;
  beginWith(std::move(next));
  logFile.start();
  if (fileIndex >= maxFiles) {
    fileIndex = 0;
    unlink(first.c_str());
  }
  return true;
}

std::string EncryptedLog::getLogFilePath() {
  return std::string_view(LogTag::get()) == kMainTag ? kMainDirectory : kOtherDirectory;
}

std::string EncryptedLog::getFileTag() {
  const std::string tag = LogTag::get();
  return tag == kMainTag ? "p0" : tag;
}

std::string EncryptedLog::logFileName(int index) const {
  return getLogFilePath() + "/orb_log_" + fileTag + "_0" + std::to_string(index);
}

void EncryptedLog::createNewlogFileName() {
  beginWith(EncryptedLogFile(logFileName(fileIndex), wrappedKey));
}

void EncryptedLog::beginWith(EncryptedLogFile next) {
  applyLogPerms();
  next.create();
  fullFile = std::move(logFile);
  logFile = std::move(next);
}

void EncryptedLog::writeToFile(const uint8_t* bytes, size_t size, EncryptedLogFile& file) const {
  applyLogPerms();
  file.append(bytes, size);
}

// Sets the mask of the whole process, as docs/logging.md says of this setting.
void EncryptedLog::applyLogPerms() const {
  if (logPermsEnabled) umask(002);
}
