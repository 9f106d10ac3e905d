// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "LogTestPeer.h"
#include "Reference.h"
#include "TestKeys.h"

namespace logtest {

namespace fs = std::filesystem;
using Bytes = std::vector<uint8_t>;
using Texts = std::vector<std::string>;

constexpr char kMain[] = "/data/vendor/orb_logs/main";
constexpr char kOther[] = "/data/vendor/orb_logs/other";
constexpr char kConfig[] = "/data/vendor/orb_logs/config/orb_log_config";
constexpr char kVersionLine[] = "|ORB|Log::printVersion:155 version ORB-20250524-d9c57ad5";
constexpr char kInitFailedLine[] = "|ORB|Log::initLogEncryption:645 C-Logging Init failed";

constexpr size_t kHeaderSize = 512;
constexpr size_t kRecordHeadSize = 2 + 12 + 16;

inline Bytes contentOf(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return Bytes(std::istreambuf_iterator<char>(file), {});
}

inline void write(const fs::path& path, const std::string& content) {
  std::ofstream(path, std::ios::binary) << content;
}

struct Record {
  size_t length = 0;  // from its first two bytes
  Bytes iv, tag, cipher;
};

// The records from an offset on. An incomplete record is a failure of the test.
inline std::vector<Record> recordsOf(const Bytes& content, size_t offset = kHeaderSize) {
  std::vector<Record> records;
  while (offset < content.size()) {
    Record record;
    if (content.size() - offset >= 2) {
      record.length = static_cast<size_t>(content[offset] | content[offset + 1] << 8);
    }
    if (record.length < 28 || content.size() - offset - 2 < record.length) {
      ADD_FAILURE() << "no whole record at offset " << offset;
      break;
    }
    const auto at = content.begin() + static_cast<ptrdiff_t>(offset) + 2;
    record.iv.assign(at, at + 12);
    record.tag.assign(at + 12, at + 28);
    record.cipher.assign(at + 28, at + static_cast<ptrdiff_t>(record.length));
    offset += 2 + record.length;
    records.push_back(std::move(record));
  }
  return records;
}

// Where the last whole record ends.
inline size_t endOfRecords(const Bytes& content) {
  size_t end = kHeaderSize;
  while (content.size() >= end + 2) {
    const size_t size = 2 + static_cast<size_t>(content[end] | content[end + 1] << 8);
    if (content.size() - end < size) break;
    end += size;
  }
  return end;
}

// The session key at the start of a file, unwrapped by the openssl program.
inline Bytes sessionKeyOf(const Bytes& content, const testkeys::RsaKey& key) {
  const fs::path directory = "/tmp/unwrap";
  fs::create_directory(directory);
  write(directory / "key.pem", key.privatePem);
  write(directory / "wrapped",
        std::string(content.begin(), content.begin() + static_cast<ptrdiff_t>(key.n.size())));
  fs::remove(directory / "session");
  const int status = std::system(
      "cd /tmp/unwrap && openssl pkeyutl -decrypt -inkey key.pem -pkeyopt rsa_padding_mode:oaep "
      "-in wrapped -out session");
  EXPECT_EQ(0, status);
  return contentOf(directory / "session");
}

inline Texts linesOf(const std::vector<Record>& records, const Bytes& sessionKey) {
  Texts lines;
  for (const Record& record : records) {
    const auto line = reference::open(sessionKey, record.iv, record.tag, record.cipher);
    EXPECT_TRUE(line.has_value());
    lines.push_back(line ? std::string(line->begin(), line->end()) : "?");
  }
  return lines;
}

inline Texts namesIn(const fs::path& directory) {
  Texts names;
  for (const auto& entry : fs::directory_iterator(directory))
    names.push_back(entry.path().filename());
  std::sort(names.begin(), names.end());
  return names;
}

// The text that the diagnostic channel got.
inline Texts diagLines(size_t from = 0) {
  Texts lines;
  for (const recording::Packet& packet : recording::packets()) lines.push_back(packetText(packet));
  lines.erase(lines.begin(), lines.begin() + static_cast<ptrdiff_t>(std::min(from, lines.size())));
  return lines;
}

// The messages of the lines that a test logged with say().
inline Texts messagesOf(const Texts& lines) {
  const std::string mark = "|T|File::f:1 ";
  Texts messages;
  for (const std::string& line : lines) {
    const size_t at = line.find(mark);
    if (at != std::string::npos) messages.push_back(line.substr(at + mark.size()));
  }
  return messages;
}

// An encrypted log in the sandbox's /data: empty folders, no configuration file yet.
class LogEncryptionFixture : public LogFixture {
 protected:
  LogEncryptionFixture() : mFormerMask(umask(022)) { clearData(); }
  ~LogEncryptionFixture() override {
    LogTestPeer::reset();
    umask(mFormerMask);
  }

  static void clearData() {
    fs::remove_all("/data/vendor/orb_logs");
    for (const char* name : {"main", "other", "config"})
      fs::create_directories(fs::path("/data/vendor/orb_logs") / name);
  }

  static std::string head(uint64_t records, uint8_t files) {
    std::string text;
    for (int i = 0; i < 8; ++i) text += static_cast<char>(records >> (8 * i));
    return text + static_cast<char>(files);
  }
  static void configure(uint64_t records = 3000, uint8_t files = 3,
                        const testkeys::RsaKey& key = testkeys::rsaKey(2048)) {
    write(kConfig, head(records, files) + key.publicPem);
  }

  void say(const std::string& text) {
    log.addLogRecord(4, "T", "File.cpp", "f", 1, "%s", text.c_str());
  }

  // The platform and the diagnostic channel get each line, independent of the file.
  void sayToAll(const std::string& text) {
    recording::setDiagListening(true);
    recording::clear();
    say(text);
    EXPECT_EQ(Texts{"|T|File::f:1 " + text}, recording::texts());
    EXPECT_EQ(Texts{text}, messagesOf(diagLines()));
  }

  // All lines of a file without the header, which the key must unwrap.
  static Texts linesIn(const fs::path& path, const testkeys::RsaKey& key = testkeys::rsaKey(2048)) {
    const Bytes content = contentOf(path);
    if (content.size() < kHeaderSize) {
      ADD_FAILURE() << path << " has " << content.size() << " bytes";
      return {};
    }
    return linesOf(recordsOf(content), sessionKeyOf(content, key));
  }

 private:
  const mode_t mFormerMask;
};

}  // namespace logtest
