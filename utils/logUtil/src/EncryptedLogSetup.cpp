// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "EncryptedLogSetup.h"

#include <android/log.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "CryptoUtil.h"
#include "Log.h"

namespace {

constexpr char kConfigFile[] = "/data/vendor/orb_logs/config/orb_log_config";

// What the configuration file begins with: records per file, then the number of files.
constexpr size_t kRecordsSize = 8;
constexpr size_t kConfigHeadSize = kRecordsSize + 1;
// No key that fits its field in the log has a text as long as this.
constexpr size_t kMaxPemSize = 64 * 1024;

// The names under which the log shows the lines about keys.
constexpr char kCryptoSource[] = "utils/logUtil/src/CryptoUtil.cpp";
constexpr char kCryptoFunction[] = "initializeRsaEncryption";

// Up to @p size bytes of the file; fewer at its end or when it cannot be read further.
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

uint64_t littleEndian(const std::string& bytes, size_t offset, size_t size) {
  uint64_t value = 0;
  for (size_t i = size; i-- > 0;) {
    const size_t at = offset + i;
    value = value << 8 | (at < bytes.size() ? static_cast<uint8_t>(bytes[at]) : 0u);
  }
  return value;
}

void logKeySize(size_t size) {
  ORB_LOG_AS(ANDROID_LOG_ERROR, kCryptoSource, kCryptoFunction, "public_key size %d",
             static_cast<int>(size));
}

}  // namespace

UniqueFd openLogConfig() {
  // O_NONBLOCK: the name may be that of a pipe, whose open would wait for a writer.
  return UniqueFd(openAboveStandardStreams(
      [] { return open(kConfigFile, O_RDONLY | O_CLOEXEC | O_NONBLOCK); }));
}

bool readLogConfig(int fd, EncryptedLog::Settings& settings) {
  const std::string config = readStart(fd, kConfigHeadSize + kMaxPemSize);
  settings.recordsPerFile = littleEndian(config, 0, kRecordsSize);
  settings.maxFiles = static_cast<uint8_t>(littleEndian(config, kRecordsSize, 1));
  // A text that is too long to be a key is not read to its end. The line has its whole length.
  struct stat status = {};
  if (fstat(fd, &status) == 0 &&
      status.st_size > static_cast<off_t>(kConfigHeadSize + kMaxPemSize)) {
    logKeySize(static_cast<size_t>(status.st_size) - kConfigHeadSize);
    return false;
  }
  return makeLogKeys(config.size() > kConfigHeadSize ? config.substr(kConfigHeadSize) : "",
                     settings);
}

bool makeLogKeys(std::string publicKeyPem, EncryptedLog::Settings& settings) {
  logKeySize(publicKeyPem.size());
  CryptoUtil crypto;
  if (crypto.initializeRsaEncryption(settings.aesKey, settings.wrappedKey, publicKeyPem)) {
    return true;
  }
  if (crypto.couldNotWrap()) {
    ORB_LOG_AS(ANDROID_LOG_ERROR, kCryptoSource, kCryptoFunction, "encryptWithRSAPubKey failed");
  }
  return false;
}
