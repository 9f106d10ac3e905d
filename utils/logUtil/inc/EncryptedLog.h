// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "EncryptedLogFile.h"
#include "GcmCipher.h"
#include "LogLine.h"

// The encrypted log: seals records with the session key of this run and appends them to files that
// only the holder of the private key can read, one file after the other. One object, owned by the
// log, which declares it guarded by its mutex: so every call is made with that held, on the thread
// that logs, and records stand in the files in the order of the lines. What cannot be sealed or
// written is dropped.
class EncryptedLog {
 public:
  // Key material, wiped at its end.
  struct Secret : std::vector<uint8_t> {
    Secret() = default;
    Secret(const Secret&) = delete;
    Secret& operator=(const Secret&) = delete;
    ~Secret();
  };
  // What a run is started with: the configuration's numbers as they stand there, and its keys.
  struct Settings {
    uint64_t recordsPerFile = 0;
    uint8_t maxFiles = 0;
    bool logPermsEnabled = false;  // the files' group may read them
    Secret aesKey;
    std::vector<uint8_t> wrappedKey;  // the same for whoever has the private key
  };

  EncryptedLog() = default;
  EncryptedLog(const EncryptedLog&) = delete;
  EncryptedLog& operator=(const EncryptedLog&) = delete;

  // Begins the first file; the next call of stop() ends it. False when libcrypto does not take the
  // key.
  bool start(const Settings& settings);
  void stop();
  bool isEnabled() const { return encryptionEnabled; }

  // Appends one record.
  void encryptLogMsg(std::string_view entry);

  // libcrypto is about to go: from now on nothing is sealed in this process. Any thread.
  static void noteCryptoGone();

  // How the present run goes; of the latest one when there is none.
  uint64_t getRecordsPerFile() const { return recordsPerFile; }
  uint8_t getMaxFiles() const { return maxFiles; }
  int getFileIndex() const { return fileIndex; }
  const std::vector<uint8_t>& getWrappedKey() const { return wrappedKey; }
  const std::string& currentLogFile() const { return logFile.path(); }

 private:
  friend struct EncryptedLogPeer;  // tests that need a full file without its records

  bool nextLogFile();
  std::string logFileName(int index) const;
  bool createNewlogFileName();
  void beginWith(EncryptedLogFile next);
  void writeToFile(const uint8_t* bytes, size_t size, EncryptedLogFile& file) const;
  void applyLogPerms() const;
  // The directory follows the present tag, as file names follow the one that the run began with.
  static std::string getLogFilePath();
  static std::string getFileTag();

  bool encryptionEnabled = false;
  bool logPermsEnabled = false;
  uint8_t maxFiles = 0;
  int recordsInFile = 0;
  int fileIndex = 0;
  uint64_t recordsPerFile = 0;
  GcmCipher recordCipher;           // holds the session key
  std::vector<uint8_t> wrappedKey;  // begins every file
  std::string fileTag;
  EncryptedLogFile logFile;   // the present one
  EncryptedLogFile fullFile;  // the one before, for the record that found it full
};
