// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The log's configuration file. The log is set up with it, writes a few lines and is released.
// Input: a byte of switches, then the file. With switch 1 the bytes after the file's head of nine
// bytes are the binary form of a key. The file then gets the text form, which few mutations would
// leave valid.
#include <openssl/evp.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "ByteReader.h"
#include "Check.h"
#include "FuzzPlatform.h"
#include "FuzzTarget.h"
#include "Log.h"
#include "Watchdog.h"

// The private state of the log that this target checks.
struct LogTestPeer {
  struct Encryption {
    bool enabled = false;
    uint64_t recordsPerFile = 0;
    unsigned maxFiles = 0;
    std::vector<uint8_t> wrappedKey;
    std::string file;
  };
  // Without this, it would continue after release().
  static void stopEncryption() { Log::getInstance()->stopEncryption(); }
  static Encryption encryption() {
    Log& log = *Log::getInstance();
    const LockGuard lock(log.mutex);
    const EncryptedLog& encrypted = log.encryptedLog;
    return {encrypted.isEnabled(), encrypted.getRecordsPerFile(), encrypted.getMaxFiles(),
            encrypted.getWrappedKey(), encrypted.currentLogFile()};
  }
};

namespace {

namespace fs = std::filesystem;

constexpr char kFolder[] = "/data/vendor/orb_logs";
constexpr char kConfig[] = "/data/vendor/orb_logs/config/orb_log_config";
constexpr size_t kConfigHead = 9;
constexpr size_t kFileHead = 512;
constexpr size_t kLeastRecord = 28;
constexpr size_t kMostRecord = kLeastRecord + fuzzplatform::kLongestLine;

// The switches in the first byte.
enum : uint8_t { kBinaryKey = 1, kDeferred = 2, kPermissions = 4, kListening = 8, kFilesStay = 16 };

std::string asPem(const std::vector<uint8_t>& key) {
  std::string text(4 * (key.size() / 3 + 1) + 1, '\0');
  const int size = EVP_EncodeBlock(reinterpret_cast<uint8_t*>(text.data()), key.data(),
                                   static_cast<int>(key.size()));
  text.resize(static_cast<size_t>(size));
  std::string pem = "-----BEGIN PUBLIC KEY-----\n";
  for (size_t at = 0; at < text.size(); at += 64) pem += text.substr(at, 64) + "\n";
  return pem + "-----END PUBLIC KEY-----\n";
}

void configure(uint8_t switches, ByteReader& input) {
  if ((switches & kFilesStay) == 0) fs::remove_all(kFolder);
  for (const char* const name : {"main", "other", "config"})
    fs::create_directories(fs::path(kFolder) / name);
  const std::vector<uint8_t> head = input.bytes(kConfigHead);
  std::string content(head.begin(), head.end());
  const std::vector<uint8_t> rest = input.rest();
  content += (switches & kBinaryKey) != 0 ? asPem(rest) : std::string(rest.begin(), rest.end());
  std::ofstream(kConfig, std::ios::binary | std::ios::trunc) << content;
  fuzzplatform::setLogging((switches & kDeferred) != 0 ? "1" : "");
  fuzzplatform::setLogPerms((switches & kPermissions) != 0);
  fuzzplatform::setListening((switches & kListening) != 0);
}

// The file begins with the wrapped key. Then it has complete records, one for each line.
void checkFile(const LogTestPeer::Encryption& encryption, size_t lines) {
  std::ifstream file(encryption.file, std::ios::binary);
  const std::vector<uint8_t> content(std::istreambuf_iterator<char>(file), {});
  FUZZ_CHECK(content.size() > kFileHead);
  FUZZ_CHECK(
      std::equal(encryption.wrappedKey.begin(), encryption.wrappedKey.end(), content.begin()));
  size_t at = kFileHead;
  size_t records = 0;
  for (; content.size() - at >= 2; ++records) {
    const size_t length = static_cast<size_t>(content[at] | content[at + 1] << 8);
    FUZZ_CHECK(length >= kLeastRecord && length <= kMostRecord);
    FUZZ_CHECK(content.size() - at - 2 >= length);
    at += 2 + length;
  }
  FUZZ_CHECK(at == content.size());
  FUZZ_CHECK(records == lines);
}

void run(ByteReader& input) {
  const uint8_t switches = input.byte();
  configure(switches, input);
  Log& log = *Log::getInstance();
  log.init("fuzz");
  const LogTestPeer::Encryption encryption = LogTestPeer::encryption();
  constexpr int kLines = 3;
  for (int i = 0; i < kLines; ++i) ORB_LOGD("line %d %s", i, std::string(300, 'x').c_str());
  if (encryption.enabled) {
    FUZZ_CHECK(encryption.recordsPerFile >= 3000 && encryption.recordsPerFile <= 30000);
    FUZZ_CHECK(encryption.maxFiles >= 3 && encryption.maxFiles <= 10);
    FUZZ_CHECK(encryption.wrappedKey.size() == kFileHead);
    checkFile(encryption, kLines + 1);  // one more for the version
  } else {
    // Files of an earlier input may still exist.
    FUZZ_CHECK((switches & kFilesStay) != 0 || fs::is_empty("/data/vendor/orb_logs/other"));
  }
  log.release();
  LogTestPeer::stopEncryption();
}

}  // namespace

int LLVMFuzzerInitialize(int*, char***) { return 0; }

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const Watchdog::Step step("log_config");
  const mode_t mask = umask(022);
  ByteReader input(data, size);
  run(input);
  umask(mask);
  return 0;
}
