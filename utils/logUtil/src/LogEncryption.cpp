// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// Encrypted logging: its set-up, its records and the rotation of its files. Which file a new
// process begins with is decided in LogFiles.cpp.
#include <android/log.h>
#include <fcntl.h>
#include <openssl/crypto.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <new>
#include <thread>

#include "CryptoUtil.h"
#include "Log.h"

namespace {

constexpr char kConfigFile[] = "/data/vendor/orb_logs/config/orb_log_config";

// Log point: a line number that log consumers rely on.
constexpr int kInitFailedLine = 645;

// What the configuration file begins with: records per file, then the number of files.
constexpr size_t kRecordsSize = 8;
constexpr size_t kConfigHeadSize = kRecordsSize + 1;
// No key that fits its field in the log has a text as long as this.
constexpr size_t kMaxPemSize = 64 * 1024;

constexpr uint64_t kMinRecords = 3000;
constexpr uint64_t kMaxRecords = 30000;
constexpr uint8_t kMinFiles = 3;
constexpr uint8_t kMaxFiles = 10;

// How long the end of the process waits for a record under way.
constexpr int kExitTries = 100;
constexpr std::chrono::milliseconds kExitPause(1);

// A record is its length (16 bits, little-endian, without itself), IV, tag and ciphertext.
constexpr size_t kLengthSize = 2;
constexpr size_t kRecordHeadSize = kLengthSize + GcmCipher::kIvSize + GcmCipher::kTagSize;

// Up to `size` bytes of the file; fewer at its end or when it cannot be read further.
std::string readStart(int fd, size_t size) {
  std::string text(size, '\0');
  size_t have = 0;
  while (have < size) {
    const ssize_t got = read(fd, &text[have], size - have);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) break;
    have += static_cast<size_t>(got);
  }
  text.resize(have);
  return text;
}

// What is too long to be a key is not read to its end, only named with its length.
bool initializeKeys(int fd, std::vector<uint8_t>& aesKey, std::vector<uint8_t>& wrapped,
                    std::string& pem) {
  struct stat status = {};
  if (fstat(fd, &status) == 0 &&
      status.st_size > static_cast<off_t>(kConfigHeadSize + kMaxPemSize)) {
    CryptoUtil::logKeySize(static_cast<size_t>(status.st_size) - kConfigHeadSize);
    return false;
  }
  return CryptoUtil().initializeRsaEncryption(aesKey, wrapped, pem);
}

uint64_t littleEndian(const std::string& bytes, size_t offset, size_t size) {
  uint64_t value = 0;
  for (size_t i = size; i-- > 0;) {
    const size_t at = offset + i;
    value = value << 8 | (at < bytes.size() ? static_cast<uint8_t>(bytes[at]) : 0u);
  }
  return value;
}

}  // namespace

void Log::initLogEncryption() {
  stopEncryption();
  // Not waiting for a writer, should the name be a pipe's.
  const UniqueFd file(openAboveStandardStreams(
      [] { return open(kConfigFile, O_RDONLY | O_CLOEXEC | O_NONBLOCK); }));
  if (file.get() < 0) return;
  bool done = false;
  try {
    done = configureEncryption(file.get());
  } catch (const std::bad_alloc&) {
  }
  if (done) return;
  stopEncryption();
  printToAdb(ANDROID_LOG_ERROR, "ORB", kSource, "initLogEncryption", kInitFailedLine,
             "C-Logging Init failed");
}

bool Log::configureEncryption(int fd) {
  const std::string config = readStart(fd, kConfigHeadSize + kMaxPemSize);
  std::string pem = config.size() > kConfigHeadSize ? config.substr(kConfigHeadSize) : "";

  struct Secret : std::vector<uint8_t> {
    ~Secret() { wipe(*this); }
  } aesKey;
  std::vector<uint8_t> wrapped;
  return initializeKeys(fd, aesKey, wrapped, pem) &&
         startEncryption(aesKey, std::move(wrapped), littleEndian(config, 0, kRecordsSize),
                         static_cast<uint8_t>(littleEndian(config, kRecordsSize, 1)));
}

bool Log::startEncryption(const std::vector<uint8_t>& aesKey, std::vector<uint8_t> wrapped,
                          uint64_t recordLimit, uint8_t fileLimit) {
  // libcrypto takes itself down while the process exits; threads that still log must not use it
  // then.
  static const bool stopsInTime = OPENSSL_atexit([] { getInstance()->stopBeforeExit(); }) == 1;
  const Writer writer(mutex);
  if (!stopsInTime || !recordCipher.setKey(aesKey.data())) return false;
  wrappedKey = std::move(wrapped);
  recordsPerFile = std::clamp(recordLimit, kMinRecords, kMaxRecords);
  maxFiles = std::clamp(fileLimit, kMinFiles, kMaxFiles);
  recordsInFile = 0;
  fileIndex = 0;
  checkExistingFiles();
  fileTag = getFileTag();
  createNewlogFileName();
  logFile.start();
  encryptionEnabled = true;
  return true;
}

// libcrypto is about to go. A record that is being sealed is waited for, but not a log call that is
// stuck somewhere else: that one finds the flag when it comes to sealing. A forked child has
// nothing to stop; from inside a log call this thread holds the log itself.
void Log::stopBeforeExit() {
  cryptoGone = true;
  if (home.isElsewhere() || Writer::isHere()) return;
  for (int left = kExitTries; left > 0; --left) {
    if (mutex.try_lock()) {
      endEncryption();
      mutex.unlock();
      return;
    }
    std::this_thread::sleep_for(kExitPause);
  }
}

void Log::stopEncryption() {
  const Writer writer(mutex);
  endEncryption();
}

void Log::endEncryption() {
  encryptionEnabled = false;
  recordCipher.clear();
  logFile.close();
  fullFile.close();
}

// Without memory for the name of the next file the record is in the other sinks only.
void Log::encryptRecord(std::string_view entry) {
  if (cryptoGone.load()) return;
  try {
    encryptLogMsg(entry);
  } catch (const std::bad_alloc&) {
  }
}

void Log::encryptLogMsg(std::string_view entry) {
  // The record that finds the file full starts the next one and still goes to this one.
  const bool full = recordsInFile > static_cast<int64_t>(recordsPerFile);
  if (full) nextLogFile();
  const size_t length = GcmCipher::kIvSize + GcmCipher::kTagSize + entry.size();
  uint8_t record[kRecordHeadSize + LogLine::kBufferSize];
  if (kLengthSize + length > sizeof record) return;
  record[0] = static_cast<uint8_t>(length);
  record[1] = static_cast<uint8_t>(length >> 8);
  uint8_t* const iv = record + kLengthSize;
  uint8_t* const tag = iv + GcmCipher::kIvSize;
  // A record that cannot be sealed properly is not written at all.
  if (recordCipher.newIv(iv) && recordCipher.seal(entry, iv, record + kRecordHeadSize, tag)) {
    writeToFile(record, kLengthSize + length, full ? fullFile : logFile);
  }
  if (full) fullFile.close();
  ++recordsInFile;
}

// The last file in turn keeps the index that is one too high in its name; after it, 1 follows.
void Log::nextLogFile() {
  // What takes memory comes first: the turn is made as a whole or not at all.
  const std::string first = logFileName(0);
  LogFile next(logFileName(fileIndex + 1), wrappedKey);
  recordsInFile = 0;
  ++fileIndex;
  beginWith(std::move(next));
  logFile.start();
  if (fileIndex >= maxFiles) {
    fileIndex = 0;
    unlink(first.c_str());
  }
}

std::string Log::logFileName(int index) const {
  return getLogFilePath() + "/orb_log_" + fileTag + "_0" + std::to_string(index);
}

bool Log::createNewlogFileName() {
  beginWith(LogFile(logFileName(fileIndex), wrappedKey));
  return true;
}

void Log::beginWith(LogFile next) {
  applyLogPerms();
  next.create();
  fullFile = std::move(logFile);
  logFile = std::move(next);
}

void Log::writeToFile(const uint8_t* bytes, size_t size, LogFile& file) const {
  if (size == 0) return;
  applyLogPerms();
  file.append(bytes, size);
}

// The whole process's mask, as the permission setting is documented: others of the group may read.
void Log::applyLogPerms() const {
  if (logPermsEnabled.load()) umask(002);
}
